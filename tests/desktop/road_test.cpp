#include "tests/harness/everyday.h"

// From a key press on a real desktop to the window back in its place, looked at from outside.

namespace pellow::desktop {
namespace {

using nlohmann::json;

class Road : public Everyday {
 protected:
  TestClient client{desktop};
};

TEST_F(Road, AKeyPutsAWindowAwayAndAClickOnItsTabBringsItBack) {
  const auto letter = open(client, "Letter to Åse", {100, 120, 500, 300});
  const auto sums = open(client, "Sums", {300, 200, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch());

  const auto emptyStrip = desktop.content(pellow->strip());
  EXPECT_EQ(emptyStrip, (PixelRect{1280 - 44 - 6, 400 - 30, 44, 60}));

  ASSERT_TRUE(desktop.activate(letter.window));
  press('t');
  ASSERT_TRUE(eventually([&] { return !isHome(letter); }));
  const auto journal = pellow->journal();
  ASSERT_EQ(journal.size(), 1) << "others can read the record before the window moves";
  EXPECT_EQ(journal[0]["bundleID"], client.windowClass());
  EXPECT_EQ(journal[0]["title"], "Letter to Åse");
  EXPECT_EQ(journal[0]["originalOrigin"], (json{letter.home.x, letter.home.y}));
  EXPECT_EQ(journal[0]["parkedOrigin"], (json{1279, 800 - 28}));
  const PixelRect parked{1279, 800 - 28, letter.home.width, letter.home.height};
  EXPECT_TRUE(eventually([&] { return desktop.frame(letter.window) == parked; }));
  ASSERT_TRUE(hasTabs(1));
  EXPECT_EQ(desktop.content(pellow->strip()), (PixelRect{1280 - 44 - 6, 400 - 22, 44, 44}));
  EXPECT_TRUE(eventually([&] {
    const auto strip = pellow->picture();
    return strip.at(22 - 6, 22) == TestClient::iconLeft &&
           strip.at(22 + 6, 22) == TestClient::iconRight;
  })) << "the tab shows the application's icon";

  ASSERT_TRUE(desktop.activate(sums.window));
  pellow->clickTab(0);
  expectHome({letter, sums});
  EXPECT_TRUE(becomesActive(letter));
  EXPECT_TRUE(eventually([&] {
    auto stacking = desktop.stacking();
    std::erase(stacking, pellow->strip());  // floats above all others
    return stacking.back() == letter.window;
  }));
  expectAllIsOver();
  EXPECT_TRUE(eventually([&] { return pellow->picture().count(TestClient::iconLeft) == 0; }));
  EXPECT_EQ(desktop.content(pellow->strip()), emptyStrip);
}

TEST_F(Road, EveryTerminationSignalBringsEverythingBack) {
  const std::vector guests{open(client, "First", {100, 120, 500, 300}),
                           open(client, "Second", {200, 200, 400, 300})};
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    SCOPED_TRACE(strsignal(signal));
    ASSERT_NO_FATAL_FAILURE(launch());
    for (const auto& each : guests) ASSERT_NO_FATAL_FAILURE(putOffScreen(each));
    end(signal);
    expectHome(guests);
    EXPECT_TRUE(pellow->journal().empty());
    EXPECT_TRUE(pellow->hasLogged("info Caught termination signal; restoring parked windows"));
  }
}

TEST_F(Road, AWindowMayBeDestroyedAtAnyMoment) {
  ASSERT_NO_FATAL_FAILURE(launch());
  {
    TestClient doomed(desktop, "Doomed");
    const auto parked = open(doomed, "Parked", {100, 120, 500, 300});
    const auto first = open(doomed, "First", {100, 120, 500, 300});
    const auto second = open(doomed, "Second", {200, 220, 500, 300});
    for (const auto& each : {parked, first, second}) ASSERT_NO_FATAL_FAILURE(putOffScreen(each));
    doomed.destroy(parked.window);
    EXPECT_TRUE(hasTabs(2));
    doomed.process().kill();
    expectAllIsOver();
  }

  // In the middle of going, and in the middle of coming back.
  for (int round = 0; round < 6; ++round) {
    for (const bool returning : {false, true}) {
      const auto leaving = open(client, "Leaving", {100, 120, 500, 300});
      const auto keys = pellow->timesLogged("info Shortcut fired: pellowFrontmost");
      if (returning) {
        ASSERT_NO_FATAL_FAILURE(putOffScreen(leaving));
        pellow->clickTab(0);
      } else {
        press('t');
      }
      client.destroy(leaving.window);
      ASSERT_TRUE(eventually([&] { return !desktop.exists(leaving.window); }));
      ASSERT_TRUE(eventually(
          [&] { return pellow->timesLogged("info Shortcut fired: pellowFrontmost") > keys; }));
      expectAllIsOver();
      // An alert may be showing; the next round starts without one.
      end();
      EXPECT_TRUE(pellow->journal().empty());
      ASSERT_NO_FATAL_FAILURE(launch());
    }
  }
}

// The program's own alert has the keyboard until it is closed, and in the program's view a little
// longer; a key pressed right after must not be lost.
TEST_F(Road, WhatCannotBeDoneIsToldInAnAlertEachTime) {
  ASSERT_NO_FATAL_FAILURE(launch());
  for (int round = 1; round <= 10; ++round) {
    press('t');
    ASSERT_TRUE(eventually([&] {
      return pellow->timesLogged("error No focused window to pellow.") == round;
    })) << "round "
        << round;
    ASSERT_NO_FATAL_FAILURE(awaitAlert());
    ASSERT_NO_FATAL_FAILURE(answerAlert());
  }
}

// It ends at once, with this status and one sentence that contains the word.
void expectRefusal(ChildProcess& process, int status, std::string_view word) {
  EXPECT_EQ(process.exitStatus(), status);
  const auto said = process.standardError();
  EXPECT_TRUE(said.contains(word)) << said;
  EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
}

TEST(Start, SaysWhyItCannot) {
  DesktopSession desktop({.windowManager = {}});
  const auto start = [&](const Environment& changes) {
    return desktop.start({PELLOW_BINARY}, changes);
  };
  expectRefusal(*start({{"DISPLAY", ""}}), 1, "display");
  expectRefusal(*start({{"DISPLAY", ":9999"}}), 1, ":9999");
  expectRefusal(*start({{"DISPLAY", ""}, {"WAYLAND_DISPLAY", "wayland-0"}}), 1, "Wayland");

  const auto unknown = desktop.start({PELLOW_BINARY, "--unknown"});
  EXPECT_EQ(unknown->exitStatus(), 2);
  EXPECT_TRUE(unknown->standardError().contains("Usage"));
}

// At login it may be started first.
TEST(Start, WaitsForAWindowManager) {
  DesktopSession desktop({.windowManager = {}});
  const auto waits = [](PellowProgram& pellow) {
    return eventually([&] { return pellow.hasLogged("default Waiting for a window manager"); });
  };
  PellowProgram ended(desktop);
  ASSERT_TRUE(waits(ended));
  ended.process().send(SIGTERM);
  EXPECT_EQ(ended.process().exitStatus(), 128 + SIGTERM);

  PellowProgram pellow(desktop);
  ASSERT_TRUE(waits(pellow));
  desktop.replaceWindowManager(chosenManager().command);
  EXPECT_TRUE(pellow.isReady()) << pellow.process().standardError();
}

TEST_F(Road, OnePellowServesADisplayUntilItsSuccessorTakesOver) {
  ASSERT_NO_FATAL_FAILURE(launch());
  const auto note = open(client, "Note", {300, 150, 500, 400});
  ASSERT_NO_FATAL_FAILURE(putOffScreen(note));

  // Started as the old one would start it, it waits and changes nothing.
  auto next = std::make_unique<PellowProgram>(desktop, Environment{{"PELLOW_RELAUNCHED", "1"}});
  PellowProgram stranger(desktop);
  expectRefusal(stranger.process(), 1, "already");
  EXPECT_TRUE(next->process().isRunning());
  EXPECT_EQ(pellow->tabCount(), 1);
  EXPECT_EQ(pellow->journal().size(), 1);

  end();
  expectHome({note});
  pellow = std::move(next);
  ASSERT_TRUE(pellow->isReady());
  expectAllIsOver();
  ASSERT_NO_FATAL_FAILURE(putOffScreen(note));
  end();
  expectHome({note});
}

// One user, two displays: what one Pellow cleans up after a crash is not the other's.
TEST_F(Road, TheCrashOfAPellowOnAnotherDisplayLeavesThisOneItsJournal) {
  DesktopSession other;
  TestClient otherClient(other);
  const auto theirs = otherClient.open("Theirs", {200, 150, 500, 300});
  const auto home = other.frame(theirs);
  auto folders = desktop.environment();
  folders["DISPLAY"] = other.display();
  auto theirPellow = std::make_unique<PellowProgram>(other, folders);
  ASSERT_TRUE(theirPellow->isReady());
  ASSERT_NO_FATAL_FAILURE(launch());
  const auto ours = open(client, "Ours", {100, 120, 500, 300});
  ASSERT_NO_FATAL_FAILURE(putOffScreen(ours));

  ASSERT_TRUE(other.activate(theirs));
  other.type({key::control, key::alt, key::super, 't'});
  ASSERT_TRUE(eventually([&] { return theirPellow->tabCount() == 1; }));
  theirPellow->process().kill();
  theirPellow = std::make_unique<PellowProgram>(other, folders);
  EXPECT_TRUE(eventually([&] { return other.frame(theirs) == home; }));
  EXPECT_EQ(pellow->journal().size(), 1);

  pellow->process().kill();
  ASSERT_NO_FATAL_FAILURE(launch());
  expectHome({ours});
}

}  // namespace
}  // namespace pellow::desktop
