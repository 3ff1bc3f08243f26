#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "platforms/simulated/desktop.h"

// What every story relies on: time is virtual, and the desktop keeps the promises of the ports.

namespace pellow::simulated {
namespace {

using Lines = std::vector<std::string>;

const QuartzRect home{100, 120, 800, 600};

class SimulatedDesktopTest : public testing::Test {
 protected:
  template <class T>
  T read(const AXElement& element, std::string_view attribute) {
    return std::get<T>(element.copyAttribute(attribute, patience).value());
  }

  simulated::Desktop desktop;
  MainQueue& mainQueue = desktop.queues().main();
  Seconds patience = 6;
};

// That a seed always gives the same history is left to the random histories, which compare every
// call.
TEST(SimulatedScheduler, TheSeedDecidesWhoIsFirst) {
  std::set<std::string> firsts;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    simulated::Desktop desktop({.seed = seed});
    const auto left = desktop.queues().makeSerialQueue("left");
    const auto right = desktop.queues().makeSerialQueue("right");
    Lines done;
    const auto one = left->async([&] { done.push_back("left"); });
    const auto two = right->async([&] { done.push_back("right"); });
    desktop.runUntilQuiet();
    firsts.insert(done.at(0));
  }
  EXPECT_EQ(firsts, (std::set<std::string>{"left", "right"}));
}

TEST_F(SimulatedDesktopTest, VirtualTimeJumpsFromOneMomentToTheNext) {
  Lines done;
  const auto note = [&](const std::string& what) {
    done.push_back(fmt::format("{} {:.1f}", what, desktop.now()));
  };
  const auto start = desktop.now();
  const auto late = mainQueue.after(30, [&] { note("late"); });
  auto dropped = mainQueue.after(5, [&] { note("never"); });
  Subscription timer = mainQueue.every(1, [&] {
    note("tick");
    if (done.size() == 3) timer.cancel();
  });
  const auto soon = mainQueue.async([&] { note("soon"); });
  desktop.run(1);
  dropped.cancel();
  desktop.runUntilQuiet(10);
  EXPECT_EQ(desktop.now(), start + 1) << "a timer and late work do not count as pending";
  desktop.runUntilQuiet();
  EXPECT_EQ(done, (Lines{"soon 0.0", "tick 1.0", "tick 2.0", "late 30.0"}));

  // A main thread that blocks misses ticks; they do not pile up, and nothing runs on it meanwhile.
  done.clear();
  timer = mainQueue.every(1, [&] {
    note("tick");
    if (done.size() == 1) desktop.clock().sleep(3.5);
  });
  const auto meanwhile = mainQueue.after(2, [&] { note("work"); });
  desktop.run(6);
  EXPECT_EQ(done, (Lines{"tick 31.0", "tick 34.5", "work 34.5", "tick 35.0", "tick 36.0"}));

  timer.cancel();
  std::function<void()> again;
  Subscription next;
  again = [&] { next = mainQueue.after(59, again); };
  again();
  EXPECT_THROW(desktop.runUntilQuiet(), std::runtime_error);
}

TEST_F(SimulatedDesktopTest, WindowsAnswerLikeThoseOfAMac) {
  const auto notes = desktop.launch("Notes", "com.example.notes");
  const auto list = notes.openWindow("Shopping", home);
  const auto letter = notes.openWindow("Letter", {0, 50, 300, 200}, "AXDialog");
  const auto inbox = desktop.launch("Mail").openWindow("Inbox", {0, 30, 500, 500});
  const auto element = list.element();
  const auto windows = [&] { return read<std::vector<AXElement>>(notes.element(), "AXWindows"); };
  EXPECT_EQ(windows(), (std::vector{letter.element(), element}));
  EXPECT_EQ(element.setAttribute("AXPosition", true, patience).error(), AXError::illegalArgument);

  EXPECT_TRUE(letter.element().setAttribute("AXMinimized", true, patience).has_value());
  EXPECT_EQ(windows().back(), letter.element());
  EXPECT_TRUE(desktop.workspace().activate(inbox.pid()));
  EXPECT_TRUE(element.performAction("AXRaise", patience).has_value());
  EXPECT_TRUE(inbox.isInFront()) << "a raise stays behind the frontmost application";
}

TEST_F(SimulatedDesktopTest, WindowsHaveManners) {
  const auto list = desktop.launch("Notes").openWindow("Shopping", home);
  const auto element = list.element();
  const auto placeAfterMove = [&](QuartzPoint asked) {
    EXPECT_TRUE(element.setAttribute("AXPosition", asked, patience).has_value());
    return read<QuartzPoint>(element, "AXPosition");
  };
  EXPECT_EQ(placeAfterMove({1439, 872}), (QuartzPoint{1439, 872}));
  EXPECT_DOUBLE_EQ(list.shareOnDisplays(), 28.0 / (800 * 600));
  list.snapsToGrid(10);
  EXPECT_EQ(placeAfterMove({104, 117}), (QuartzPoint{100, 120}));
  list.clampsToDisplay();
  EXPECT_EQ(placeAfterMove({1439, 872}), (QuartzPoint{640, 230}));
  EXPECT_EQ(placeAfterMove({-799, -500}), (QuartzPoint{0, 25}));

  // Slow, and too slow: the caller loses exactly its timeout.
  list.behaves().answersAfter(0.2);
  patience = 0.25;
  const auto start = desktop.now();
  EXPECT_TRUE(element.setAttribute("AXMinimized", true, patience).has_value());
  EXPECT_DOUBLE_EQ(desktop.now(), start + 0.2);
  list.answersAfter(3);
  EXPECT_EQ(element.setAttribute("AXMinimized", false, patience).error(), AXError::cannotComplete);
  EXPECT_DOUBLE_EQ(desktop.now(), start + 0.45);
  desktop.run(5);
  EXPECT_TRUE(list.isMinimized());
  // Faults by name and kind, and then the end.
  list.behaves().fails("AXPosition", AXError::notImplemented, AXCall::write);
  EXPECT_TRUE(element.copyAttribute("AXPosition", patience).has_value());
  EXPECT_EQ(element.setAttribute("AXPosition", QuartzPoint{}, patience).error(),
            AXError::notImplemented);
  list.closesDuring(2);
  EXPECT_TRUE(element.copyAttribute("AXTitle", patience).has_value());
  EXPECT_EQ(element.copyAttribute("AXTitle", patience).error(), AXError::invalidUIElement);
  EXPECT_FALSE(list.exists());
}

TEST_F(SimulatedDesktopTest, DisplaysComeAndGo) {
  desktop.screens().plug(2, {1440, -180, 1920, 1080});
  const auto notes = desktop.launch("Notes");
  const auto near = notes.openWindow("Near", {100, 100, 400, 300});
  EXPECT_EQ(desktop.screens().main()->displayID, 1);
  const auto far = notes.openWindow("Far", {2000, 200, 400, 300});
  EXPECT_EQ(desktop.screens().main()->displayID, 2);

  // The second display becomes the primary one: both spaces begin there now.
  desktop.screens().unplug(1);
  EXPECT_EQ(desktop.screens().all()[0].frame, AppKitRect(0, 0, 1920, 1080));
  EXPECT_EQ(far.frame(), QuartzRect(560, 200, 400, 300));
  EXPECT_EQ(near.frame(), QuartzRect(0, 100, 400, 300)) << "brought onto the display that is left";
  desktop.screens().unplug(2);
  EXPECT_FALSE(desktop.screens().main());
  desktop.screens().plug(3, {500, 500, 800, 600});
  EXPECT_EQ(desktop.screens().main()->frame, AppKitRect(0, 0, 800, 600));
}

TEST_F(SimulatedDesktopTest, AFailedWriteOfTheDefaultsIsLostInACrash) {
  auto& defaults = desktop.userDefaults();
  EXPECT_TRUE(defaults.set("eventually", 1.0));
  desktop.userDefaults().failNextWrite({"The disk is full."}, "journal");
  EXPECT_TRUE(defaults.set("atOnce", true, Kept::atOnce));
  EXPECT_EQ(defaults.set("journal", true, Kept::atOnce).error().sentence, "The disk is full.");
  EXPECT_EQ(defaults.value("journal"), DefaultsValue(true));
  const auto survives = [&](std::string_view key) {
    return desktop.userDefaults().afterCrash(key).has_value();
  };
  EXPECT_FALSE(survives("eventually"));
  EXPECT_TRUE(survives("atOnce"));
  desktop.run(1);
  EXPECT_TRUE(survives("eventually"));
  EXPECT_FALSE(survives("journal"));

  EXPECT_TRUE(defaults.set("eventually", 2.0));
  simulated::Desktop afterCrash(desktop.snapshot());
  EXPECT_EQ(afterCrash.userDefaults().value("eventually"), DefaultsValue(1.0));
  desktop.process().exit(0);
  simulated::Desktop afterExit(desktop.snapshot());
  EXPECT_EQ(afterExit.userDefaults().value("eventually"), DefaultsValue(2.0));
}

TEST_F(SimulatedDesktopTest, NothingOfAnEndedProcessRuns) {
  const auto list = desktop.launch("Notes").openWindow("Shopping", home);
  Lines done;
  const auto queue = desktop.queues().makeSerialQueue("com.velloway.pellow.actions");
  auto running = queue->async([&] {
    desktop.clock().sleep(1);
    const auto moved = list.element().setAttribute("AXPosition", QuartzPoint{1439, 872}, patience);
    done.push_back(moved ? "moved" : "not moved");
  });
  const auto waiting = queue->async([&] { done.push_back("waiting"); });
  const auto later = mainQueue.after(2, [&] { done.push_back("later"); });
  const auto handler = desktop.process().onSignal(TerminationSignal::terminate, [&] {
    desktop.process().exit(3);
    done.push_back("after exit");
    EXPECT_FALSE(desktop.workspace().hide(list.pid()));
  });
  const auto panel = desktop.panels().makePanel("pellow-strip", WindowShadow::yes);
  panel->orderFront();
  desktop.after(0.5, [&] { desktop.process().receive(TerminationSignal::terminate); });
  desktop.runUntilQuiet();
  EXPECT_FALSE(desktop.process().isRunning());
  EXPECT_EQ(desktop.process().exitStatus(), 3);
  EXPECT_EQ(done, (Lines{"after exit", "not moved"}));
  EXPECT_EQ(list.frame(), home);
  EXPECT_TRUE(desktop.panels().visible("pellow-strip").empty());
}

}  // namespace
}  // namespace pellow::simulated
