#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>

#include "tests/desktop/eventually.h"
#include "tests/desktop/pellow_program.h"
#include "tests/desktop/test_client.h"

// From a key press on a real desktop to the window back in its place, looked at from outside.

namespace pellow::desktop {
namespace {

using nlohmann::json;

class Road : public testing::Test {
 protected:
  void launch(const std::vector<std::string>& arguments = {}) {
    pellow = std::make_unique<PellowProgram>(desktop, arguments);
    ASSERT_TRUE(pellow->isReady()) << pellow->process().standardError();
  }

  void writeDefaults(const std::string& text) {
    const auto file = PellowProgram::defaultsFile(desktop);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text;
  }

  void pressPellow() { desktop.type({key::control, key::alt, key::super, 't'}); }
  void pressRestoreAll() { desktop.type({key::control, key::alt, key::super, 'r'}); }

  bool isAway(WindowID window) { return desktop.frame(window).x == desktop.screen().width - 1; }

  // Puts the window away by the key and waits for its tab.
  void putAway(WindowID window) {
    const int tabs = pellow->tabCount();
    ASSERT_TRUE(desktop.activate(window));
    pressPellow();
    ASSERT_TRUE(eventually([&] { return isAway(window); })) << desktop.frame(window) << "\n"
                                                            << pellow->process().standardError();
    ASSERT_TRUE(eventually([&] { return pellow->tabCount() == tabs + 1; }));
  }

  bool isBack(WindowID window, PixelRect home) {
    return eventually([&] { return desktop.frame(window) == home; });
  }

  bool isActiveAndInFront(WindowID window) {
    return eventually([&] {
      auto stacking = desktop.stacking();
      std::erase(stacking, pellow->strip());  // floats above all others
      return desktop.activeWindow() == window && stacking.back() == window;
    });
  }

  // No tab, no record, and the program alive and well.
  void expectAllIsOver() {
    EXPECT_TRUE(eventually([&] { return pellow->tabCount() == 0; })) << pellow->tabCount();
    EXPECT_TRUE(eventually([&] { return pellow->journal().empty(); })) << pellow->journal();
    EXPECT_TRUE(desktop.answersPing(pellow->strip()));
  }

  DesktopSession desktop;
  TestClient client{desktop};
  std::unique_ptr<PellowProgram> pellow;
};

TEST_F(Road, AKeyPutsAWindowAwayAndAClickOnItsTabBringsItBack) {
  const auto letter = client.open("Letter to Åse", {100, 120, 500, 300});
  const auto sums = client.open("Sums", {300, 200, 400, 300});
  const auto home = desktop.frame(letter);
  const auto elsewhere = desktop.frame(sums);
  ASSERT_NO_FATAL_FAILURE(launch());

  const auto emptyStrip = desktop.content(pellow->strip());
  EXPECT_EQ(emptyStrip, (PixelRect{1280 - 44 - 6, 400 - 30, 44, 60}));

  ASSERT_TRUE(desktop.activate(letter));
  pressPellow();
  ASSERT_TRUE(eventually([&] { return desktop.frame(letter) != home; }));
  const auto journal = pellow->journal();
  ASSERT_EQ(journal.size(), 1) << "the record is on disk before the window moves";
  EXPECT_EQ(journal[0]["bundleID"], client.windowClass());
  EXPECT_EQ(journal[0]["title"], "Letter to Åse");
  EXPECT_EQ(journal[0]["originalOrigin"], (json{home.x, home.y}));
  EXPECT_EQ(journal[0]["parkedOrigin"], (json{1279, 800 - 28}));
  const PixelRect parked{1279, 800 - 28, home.width, home.height};
  EXPECT_TRUE(eventually([&] { return desktop.frame(letter) == parked; }));
  EXPECT_EQ(desktop.frame(sums), elsewhere);

  ASSERT_TRUE(eventually([&] { return pellow->tabCount() == 1; }));
  EXPECT_EQ(desktop.content(pellow->strip()), (PixelRect{1280 - 44 - 6, 400 - 22, 44, 44}));
  EXPECT_TRUE(eventually([&] {
    const auto strip = pellow->picture();
    return strip.at(22 - 6, 22) == TestClient::iconLeft &&
           strip.at(22 + 6, 22) == TestClient::iconRight;
  })) << "the tab shows the application's icon";

  ASSERT_TRUE(desktop.activate(sums));
  pellow->clickTab(0);
  EXPECT_TRUE(isBack(letter, home)) << desktop.frame(letter);
  EXPECT_TRUE(isActiveAndInFront(letter));
  expectAllIsOver();
  EXPECT_TRUE(eventually([&] { return pellow->picture().count(TestClient::iconLeft) == 0; }));
  EXPECT_EQ(desktop.content(pellow->strip()), emptyStrip);
  EXPECT_EQ(desktop.frame(sums), elsewhere);
}

TEST_F(Road, ItCanBeGoneTwentyTimesInARow) {
  const auto window = client.open("Again", {150, 160, 420, 260});
  const auto home = desktop.frame(window);
  ASSERT_NO_FATAL_FAILURE(launch());
  for (int round = 0; round < 20; ++round) {
    ASSERT_NO_FATAL_FAILURE(putAway(window)) << "round " << round;
    if (round % 2 == 0) {
      pellow->clickTab(0);
    } else {
      pressRestoreAll();
    }
    ASSERT_TRUE(isBack(window, home)) << "round " << round << ": " << desktop.frame(window);
    ASSERT_TRUE(isActiveAndInFront(window)) << "round " << round;
    ASSERT_TRUE(eventually([&] { return pellow->tabCount() == 0 && pellow->journal().empty(); }));
  }
}

TEST_F(Road, OneKeyBringsEverythingBack) {
  std::vector<std::pair<WindowID, PixelRect>> homes;
  for (int index = 0; index < 4; ++index) {
    // Twins in title are told apart by their records.
    const auto window =
        client.open(index < 2 ? "Twin" : "Single", {60 + 90 * index, 80 + 60 * index, 380, 240});
    homes.emplace_back(window, desktop.frame(window));
  }
  ASSERT_NO_FATAL_FAILURE(launch());
  for (const auto& [window, home] : homes) ASSERT_NO_FATAL_FAILURE(putAway(window));
  EXPECT_EQ(pellow->journal().size(), 4);

  pellow->clickTab(1);
  EXPECT_TRUE(isBack(homes[1].first, homes[1].second));
  EXPECT_TRUE(eventually([&] { return pellow->journal().size() == 3; }));
  EXPECT_TRUE(isAway(homes[0].first));

  pressRestoreAll();
  for (const auto& [window, home] : homes) EXPECT_TRUE(isBack(window, home)) << home;
  expectAllIsOver();
}

TEST_F(Road, AMaximizedWindowComesBackMaximized) {
  const auto window = client.open("Large", {100, 100, 500, 300});
  const auto isMaximized = [&] { return desktop.hasState(window, "_NET_WM_STATE_MAXIMIZED_VERT"); };
  client.maximize(window);
  ASSERT_TRUE(eventually([&] { return isMaximized() && desktop.frame(window).width == 1280; }));
  const auto home = desktop.frame(window);
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putAway(window));
  pellow->clickTab(0);
  EXPECT_TRUE(isBack(window, home)) << desktop.frame(window);
  EXPECT_TRUE(eventually(isMaximized));
  expectAllIsOver();
}

TEST_F(Road, MinimizingIsAnotherWayToPutAWindowAway) {
  writeDefaults(R"({"mechanism": "minimize"})");
  const auto window = client.open("Note", {100, 120, 500, 300});
  client.open("Other", {300, 300, 300, 200});
  const auto home = desktop.frame(window);
  const auto isMinimized = [&] { return desktop.hasState(window, "_NET_WM_STATE_HIDDEN"); };
  ASSERT_NO_FATAL_FAILURE(launch());

  ASSERT_TRUE(desktop.activate(window));
  pressPellow();
  EXPECT_TRUE(eventually(isMinimized));
  EXPECT_TRUE(eventually([&] { return pellow->tabCount() == 1; }));
  EXPECT_TRUE(pellow->journal().empty());
  pellow->clickTab(0);
  EXPECT_TRUE(eventually([&] { return !isMinimized(); }));
  EXPECT_TRUE(isBack(window, home));
  EXPECT_TRUE(isActiveAndInFront(window));
  expectAllIsOver();

  pressPellow();
  ASSERT_TRUE(eventually(isMinimized));
  ASSERT_TRUE(eventually([&] { return pellow->tabCount() == 1; }));
  pellow->process().send(SIGTERM);
  EXPECT_EQ(pellow->process().exitStatus(), 0);
  EXPECT_TRUE(eventually([&] { return !isMinimized(); }));
}

TEST_F(Road, EveryTerminationSignalBringsEverythingBack) {
  const auto first = client.open("First", {100, 120, 500, 300});
  const auto second = client.open("Second", {200, 200, 400, 300});
  const auto firstHome = desktop.frame(first);
  const auto secondHome = desktop.frame(second);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    SCOPED_TRACE(strsignal(signal));
    ASSERT_NO_FATAL_FAILURE(launch());
    ASSERT_NO_FATAL_FAILURE(putAway(first));
    ASSERT_NO_FATAL_FAILURE(putAway(second));
    pellow->process().send(signal);
    EXPECT_EQ(pellow->process().exitStatus(), 0) << pellow->process().standardError();
    EXPECT_TRUE(isBack(first, firstHome)) << desktop.frame(first);
    EXPECT_TRUE(isBack(second, secondHome)) << desktop.frame(second);
    EXPECT_TRUE(pellow->journal().empty());
    EXPECT_TRUE(pellow->hasLogged("info Caught termination signal; restoring parked windows"));
  }
}

TEST_F(Road, WindowsStrandedByACrashComeBackAtTheNextLaunch) {
  std::vector<WindowID> windows;
  std::vector<PixelRect> homes;
  for (int count = 1; count <= 3; count += 2) {
    while (std::ssize(windows) < count) {
      const int offset = 70 * static_cast<int>(windows.size());
      windows.push_back(client.open("Note", {80 + offset, 90 + offset, 400, 250}));
      homes.push_back(desktop.frame(windows.back()));
    }
    ASSERT_NO_FATAL_FAILURE(launch());
    for (const auto window : windows) ASSERT_NO_FATAL_FAILURE(putAway(window));
    pellow->process().kill();
    for (const auto window : windows) EXPECT_TRUE(isAway(window));

    ASSERT_NO_FATAL_FAILURE(launch());
    EXPECT_TRUE(pellow->hasLogged("info Recovered " + std::to_string(count) +
                                  " window(s) stranded by a previous run"))
        << pellow->process().standardError();
    // Twins may change places: all of them have the same title and the same parked origin.
    std::vector<PixelRect> places;
    for (const auto window : windows) places.push_back(desktop.frame(window));
    EXPECT_TRUE(std::ranges::is_permutation(places, homes)) << testing::PrintToString(places);
    homes = places;
    expectAllIsOver();
    pellow.reset();
  }
}

TEST_F(Road, AWindowMayBeDestroyedAtAnyMoment) {
  ASSERT_NO_FATAL_FAILURE(launch());
  const auto parked = client.open("Parked", {100, 120, 500, 300});
  ASSERT_NO_FATAL_FAILURE(putAway(parked));
  client.destroy(parked);
  expectAllIsOver();

  {
    TestClient doomed(desktop, "Doomed");
    const auto first = doomed.open("First", {100, 120, 500, 300});
    const auto second = doomed.open("Second", {200, 220, 500, 300});
    ASSERT_NO_FATAL_FAILURE(putAway(first));
    ASSERT_NO_FATAL_FAILURE(putAway(second));
    doomed.process().kill();
    expectAllIsOver();
  }

  // In the middle of going, and in the middle of coming back.
  for (int round = 0; round < 6; ++round) {
    for (const bool returning : {false, true}) {
      const auto leaving = client.open("Leaving", {100, 120, 500, 300});
      const auto keys = pellow->timesLogged("info Shortcut fired: pellowFrontmost");
      if (returning) {
        ASSERT_NO_FATAL_FAILURE(putAway(leaving));
        pellow->clickTab(0);
      } else {
        pressPellow();
      }
      client.destroy(leaving);
      ASSERT_TRUE(eventually([&] { return !desktop.exists(leaving); }));
      ASSERT_TRUE(eventually(
          [&] { return pellow->timesLogged("info Shortcut fired: pellowFrontmost") > keys; }));
      expectAllIsOver();
      // It may have an alert to show; the next round begins without.
      pellow->process().send(SIGTERM);
      EXPECT_EQ(pellow->process().exitStatus(), 0);
      EXPECT_TRUE(pellow->journal().empty());
      ASSERT_NO_FATAL_FAILURE(launch());
    }
  }

  const auto survivor = client.open("Survivor", {100, 120, 500, 300});
  const auto home = desktop.frame(survivor);
  ASSERT_NO_FATAL_FAILURE(putAway(survivor));
  EXPECT_EQ(pellow->journal().size(), 1);
  pellow->clickTab(0);
  EXPECT_TRUE(isBack(survivor, home));
  expectAllIsOver();
}

TEST_F(Road, WhatCannotBeDoneIsToldInAnAlert) {
  const auto showsAlert = [&] { return !desktop.shownWindows("pellow", "pellow-alert").empty(); };
  ASSERT_NO_FATAL_FAILURE(launch());
  pressPellow();
  EXPECT_TRUE(eventually([&] { return pellow->hasLogged("error No focused window to pellow."); }));
  ASSERT_TRUE(eventually(showsAlert));
  const auto alert = desktop.shownWindows("pellow", "pellow-alert")[0];
  ASSERT_TRUE(eventually([&] { return desktop.activeWindow() == alert; }));
  desktop.type({key::returnKey});
  EXPECT_TRUE(eventually([&] { return !showsAlert(); }));

  const auto window = client.open("Note", {100, 120, 500, 300});
  ASSERT_NO_FATAL_FAILURE(putAway(window));
}

TEST_F(Road, ADefaultsFileThatIsNoObjectIsKeptBeside) {
  const auto window = client.open("Note", {100, 120, 500, 300});
  const auto home = desktop.frame(window);
  for (const std::string text : {"{\"mechanism\": \"mini", "[1, 2]", ""}) {
    SCOPED_TRACE(text);
    writeDefaults(text);
    ASSERT_NO_FATAL_FAILURE(launch());
    EXPECT_TRUE(("\n" + pellow->process().standardError()).contains("\nwarning "));
    const auto beside = PellowProgram::defaultsFile(desktop).string() + ".bad";
    std::ifstream kept(beside);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), text);
    std::filesystem::remove(beside);

    ASSERT_NO_FATAL_FAILURE(putAway(window));
    EXPECT_EQ(pellow->journal().size(), 1);
    pellow->process().send(SIGTERM);
    EXPECT_EQ(pellow->process().exitStatus(), 0);
    EXPECT_TRUE(isBack(window, home));
    EXPECT_TRUE(pellow->defaults().is_object());
  }
}

TEST_F(Road, ValuesOfTheWrongTypeAreReadAsWhatTheySay) {
  // A titled tab is 5.3 sizes wide; what is no number is 0, and 20 is the smallest size.
  const auto widthOfOneTab = [&](const std::string& defaults) {
    writeDefaults(defaults);
    launch();
    const int emptyLength = desktop.content(pellow->strip()).height;
    pressPellow();
    EXPECT_TRUE(eventually([&] { return desktop.content(pellow->strip()).height != emptyLength; }));
    const int width = desktop.content(pellow->strip()).width;
    pellow->process().send(SIGTERM);
    EXPECT_EQ(pellow->process().exitStatus(), 0);
    return width;
  };
  client.open("Note", {100, 120, 500, 300});
  EXPECT_EQ(widthOfOneTab(R"({"showTitles": "yes", "tabSize": "big"})"), 106 + 10);
  EXPECT_EQ(widthOfOneTab(R"({"showTitles": 1, "tabSize": "40"})"), 212 + 10);
  EXPECT_EQ(widthOfOneTab(R"({"showTitles": [], "tabSize": {"data": "x"}})"), 44);
  EXPECT_EQ(widthOfOneTab(R"({"showTitles": "no", "tabSize": 48})"), 48 + 10);
}

// Ends at once, with this status and one sentence that holds the word.
void expectRefusal(ChildProcess& process, int status, std::string_view word) {
  EXPECT_EQ(process.exitStatus(), status);
  const auto said = process.standardError();
  EXPECT_TRUE(said.contains(word)) << said;
  EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
}

TEST(Start, SaysWhyItCannot) {
  DesktopSession desktop({.windowManager = {}});
  const auto start = [&](const Environment& changes,
                         const std::vector<std::string>& arguments = {}) {
    std::vector<std::string> command{PELLOW_BINARY};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return desktop.start(command, changes);
  };
  expectRefusal(*start({{"DISPLAY", ""}}), 1, "display");
  expectRefusal(*start({{"DISPLAY", ":9999"}}), 1, ":9999");
  expectRefusal(*start({{"DISPLAY", ""}, {"WAYLAND_DISPLAY", "wayland-0"}}), 1, "Wayland");
  expectRefusal(*start({}), 1, "window manager");

  const auto unknown = start({}, {"--unknown"});
  EXPECT_EQ(unknown->exitStatus(), 2);
  EXPECT_TRUE(unknown->standardError().contains("Usage"));
}

TEST_F(Road, OnePellowServesADisplay) {
  ASSERT_NO_FATAL_FAILURE(launch());
  PellowProgram second(desktop);
  expectRefusal(second.process(), 1, "already");

  const auto window = client.open("Note", {100, 120, 500, 300});
  const auto home = desktop.frame(window);
  ASSERT_NO_FATAL_FAILURE(putAway(window));
  pellow->clickTab(0);
  EXPECT_TRUE(isBack(window, home));
  expectAllIsOver();
}

}  // namespace
}  // namespace pellow::desktop
