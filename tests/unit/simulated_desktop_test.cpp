#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "platforms/simulated/simulated_desktop.h"
#include "platforms/simulated/simulated_panels.h"
#include "platforms/simulated/simulated_platform.h"

// What every story relies on: one seed is one history, time is virtual, and the desktop keeps the
// promises of the ports.

namespace pellow::simulated {
namespace {

using Lines = std::vector<std::string>;

const QuartzRect home{100, 120, 800, 600};

class SimulatedDesktopTest : public testing::Test {
 protected:
  template <class T>
  T read(const AXElement& element, std::string_view attribute) {
    return std::get<T>(element.copyAttribute(attribute).value());
  }

  SimulatedPlatform platform;
  SimulatedDesktop& desktop = platform.desktop();
  MainQueue& mainQueue = platform.queues().main();
};

// Two queues that sleep and read, a timer, and a user in the middle of it all.
Lines busyHistory(std::uint64_t seed) {
  SimulatedPlatform platform({.seed = seed});
  auto& desktop = platform.desktop();
  const auto window = desktop.launch("Notes").openWindow("Shopping", home);
  desktop.recordHistory();
  desktop.delayAnswers(0.05);
  desktop.injectFaults(0.3, {AXError::failure});
  Lines done;
  const auto left = platform.queues().makeSerialQueue("left");
  const auto right = platform.queues().makeSerialQueue("right");
  std::vector<Subscription> work;
  for (auto* queue : {left.get(), right.get()}) {
    const std::string name = queue == left.get() ? "left" : "right";
    for (int i = 0; i < 5; ++i)
      work.push_back(queue->async([&, name, i, element = window.element()] {
        const auto position = element.copyAttribute("AXPosition");
        platform.clock().sleep(0.02 * i);
        done.push_back(fmt::format("{} {} {}", name, i, position.has_value()));
      }));
  }
  const auto timer = platform.queues().main().every(0.03, [&] { done.push_back("tick"); });
  desktop.after(0.1, [&] { window.close(); });
  desktop.runUntilQuiet();
  done.insert(done.end(), desktop.history().begin(), desktop.history().end());
  return done;
}

TEST(SimulatedScheduler, OneSeedIsOneHistory) {
  int different = 0;
  std::set<std::string> firsts;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const auto history = busyHistory(seed);
    EXPECT_EQ(history, busyHistory(seed));
    different += history != busyHistory(seed + 100);
    firsts.insert(history.front());
  }
  EXPECT_GT(different, 15);
  EXPECT_TRUE(firsts.contains("left 0 true") && firsts.contains("right 0 true"))
      << "the seed decides which of two queues is first";
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
    if (done.size() == 1) platform.clock().sleep(3.5);
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

TEST_F(SimulatedDesktopTest, AQueueThatEndsWaitsForWhatRunsAndDropsTheRest) {
  auto ending = platform.queues().makeSerialQueue("ending");
  Lines done;
  const auto last = ending->async([&] {
    platform.clock().sleep(1);
    done.push_back("last");
  });
  const auto tooLate = ending->async([&] { done.push_back("too late"); });
  desktop.run(0.5);
  ending = nullptr;
  EXPECT_EQ(done, Lines{"last"});
}

TEST_F(SimulatedDesktopTest, WindowsAnswerLikeThoseOfAMac) {
  const auto notes = desktop.launch("Notes", "com.example.notes");
  const auto list = notes.openWindow("Shopping", home);
  const auto letter = notes.openWindow("Letter", {0, 50, 300, 200}, "AXDialog");
  const auto inbox = desktop.launch("Mail").openWindow("Inbox", {0, 30, 500, 500});
  const auto element = list.element();
  const auto windows = [&] { return read<std::vector<AXElement>>(notes.element(), "AXWindows"); };
  EXPECT_EQ(windows(), (std::vector{letter.element(), element}));
  EXPECT_EQ(element.copyAttribute("AXGrowArea").error(), AXError::attributeUnsupported);
  EXPECT_EQ(element.performAction("AXPress").error(), AXError::actionUnsupported);
  EXPECT_EQ(element.setAttribute("AXPosition", true).error(), AXError::illegalArgument);

  // Focus and order follow what the user and the program do.
  EXPECT_TRUE(platform.workspace().activate(notes.pid()));
  EXPECT_TRUE(letter.hasFocus() && letter.isInFront());
  EXPECT_TRUE(letter.element().setAttribute("AXMinimized", true).has_value());
  EXPECT_EQ(read<AXElement>(notes.element(), "AXFocusedWindow"), element);
  EXPECT_EQ(windows().back(), letter.element());
  EXPECT_TRUE(platform.workspace().hide(notes.pid()));
  EXPECT_TRUE(inbox.hasFocus());
  EXPECT_TRUE(element.performAction("AXRaise").has_value());
  platform.workspace().unhide(notes.pid());
  EXPECT_TRUE(list.isVisible());
  EXPECT_TRUE(inbox.isInFront()) << "a raise stays behind the frontmost application";
  desktop.click({850, 900 - 200});
  desktop.runUntilQuiet();
  EXPECT_TRUE(list.hasFocus() && list.isInFront());

  // What is gone stays gone.
  notes.quit();
  EXPECT_TRUE(inbox.hasFocus());
  EXPECT_EQ(element.pid().error(), AXError::invalidUIElement);
  EXPECT_EQ(notes.element().copyAttribute("AXWindows").error(), AXError::invalidUIElement);
  EXPECT_FALSE(platform.workspace().activate(notes.pid()));
  EXPECT_FALSE(platform.workspace().application(notes.pid()));
}

TEST_F(SimulatedDesktopTest, WindowsHaveManners) {
  const auto list = desktop.launch("Notes").openWindow("Shopping", home);
  const auto element = list.element();
  const auto placeAfterMove = [&](QuartzPoint asked) {
    EXPECT_TRUE(element.setAttribute("AXPosition", asked).has_value());
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
  element.setMessagingTimeout(0.25);
  const auto start = desktop.now();
  EXPECT_TRUE(element.setAttribute("AXMinimized", true).has_value());
  EXPECT_DOUBLE_EQ(desktop.now(), start + 0.2);
  list.answersAfter(3);
  EXPECT_EQ(element.setAttribute("AXMinimized", false).error(), AXError::cannotComplete);
  EXPECT_DOUBLE_EQ(desktop.now(), start + 0.45);
  desktop.run(5);
  EXPECT_TRUE(list.isMinimized());
  // An application that acts late does so whether or not its caller has survived.
  list.actsLate();
  EXPECT_EQ(element.setAttribute("AXMinimized", false).error(), AXError::cannotComplete);
  SimulatedPlatform afterCrash(desktop.snapshot());
  for (auto* each : {&desktop, &afterCrash.desktop()}) {
    each->run(2.74);
    EXPECT_TRUE(each->counterpart(list).isMinimized());
    each->run(0.02);
    EXPECT_FALSE(each->counterpart(list).isMinimized());
  }
  // Faults by name and kind, and then the end.
  list.behaves().fails("AXPosition", AXError::notImplemented, AXCall::write);
  EXPECT_TRUE(element.copyAttribute("AXPosition").has_value());
  EXPECT_EQ(element.setAttribute("AXPosition", QuartzPoint{}).error(), AXError::notImplemented);
  list.closesDuring(2);
  EXPECT_TRUE(element.copyAttribute("AXTitle").has_value());
  EXPECT_EQ(element.copyAttribute("AXTitle").error(), AXError::invalidUIElement);
  EXPECT_FALSE(list.exists());
}

TEST_F(SimulatedDesktopTest, DisplaysComeAndGo) {
  int changes = 0;
  const auto observer = platform.screens().onDidChangeParameters([&] { ++changes; });
  desktop.plug(2, {1440, -180, 1920, 1080});
  const auto notes = desktop.launch("Notes");
  const auto near = notes.openWindow("Near", {100, 100, 400, 300});
  EXPECT_EQ(platform.screens().main()->displayID, 1);
  const auto far = notes.openWindow("Far", {2000, 200, 400, 300});
  EXPECT_EQ(platform.screens().main()->displayID, 2);

  // The second display becomes the primary one: both spaces begin there now.
  desktop.unplug(1);
  EXPECT_EQ(platform.screens().all()[0].frame, AppKitRect(0, 0, 1920, 1080));
  EXPECT_EQ(far.frame(), QuartzRect(560, 200, 400, 300));
  EXPECT_EQ(near.frame(), QuartzRect(0, 100, 400, 300)) << "brought onto the display that is left";
  desktop.unplug(2);
  EXPECT_FALSE(platform.screens().main());
  desktop.plug(3, {500, 500, 800, 600});
  EXPECT_EQ(platform.screens().main()->frame, AppKitRect(0, 0, 800, 600));
  desktop.runUntilQuiet();
  EXPECT_EQ(changes, 4);
}

TEST_F(SimulatedDesktopTest, TheUserClicksWhatLiesOnTop) {
  Lines done;
  const auto button = [&](std::string key, ViewRect frame) {
    return View{.key = key,
                .frame = frame,
                .actions = {[&done, key] { done.push_back("click " + key); },
                            [&done, key](bool inside) {
                              done.push_back((inside ? "enter " : "leave ") + key);
                            }}};
  };
  View list{.key = "list", .frame = {10, 10, 100, 60}};
  list.children = {button("below", {0, 0, 100, 30}), button("above", {0, 20, 100, 40}),
                   View{.key = "decoration", .frame = {0, 0, 100, 60}}};
  const View root{.key = "root", .frame = {0, 0, 120, 80}, .children = {list}};
  const auto panel = platform.panels().makePanel("pellow-strip");
  panel->setContent(root);
  panel->setFrame({200, 300, 120, 80});
  panel->orderFront();
  const auto doneAfter = [&](const std::function<void()>& act) {
    done.clear();
    act();
    EXPECT_TRUE(done.empty()) << "nothing reaches the program but in its main loop";
    desktop.runUntilQuiet();
    return done;
  };
  EXPECT_EQ(doneAfter([&] { desktop.click({250, 335}); }),
            (Lines{"enter below", "enter above", "click above"}))
      << "where the two overlap";
  // A new tree with the same keys disturbs nobody; one without a view under the pointer does.
  EXPECT_TRUE(doneAfter([&] { panel->setContent(root); }).empty());
  EXPECT_EQ(doneAfter([&] { panel->setFrame({200, 320, 120, 80}); }), Lines{"leave above"});
  EXPECT_THROW(desktop.clickView("pellow-strip", "list/decoration"), std::out_of_range);

  // Windows cover panels of the desktop's level.
  panel->setLevel(PanelLevel::desktopIcons);
  const auto cover = desktop.launch("Notes").openWindow("Cover", {0, 0, 1440, 900});
  EXPECT_EQ(doneAfter([&] { desktop.click({250, 355}); }), Lines{"leave below"});
  cover.minimize();
  EXPECT_EQ(doneAfter([&] { desktop.click({250, 355}); }).back(), "click above");
}

TEST_F(SimulatedDesktopTest, AFailedWriteOfTheDefaultsIsLostInACrash) {
  auto& defaults = platform.userDefaults();
  EXPECT_TRUE(defaults.set("eventual", 1.0));
  desktop.failNextDefaultsWrite({"The disk is full."}, "journal");
  EXPECT_TRUE(defaults.set("immediate", true, Durability::immediate));
  EXPECT_EQ(defaults.set("journal", true, Durability::immediate).error().sentence,
            "The disk is full.");
  EXPECT_EQ(defaults.value("journal"), DefaultsValue(true));
  const auto onDisk = [&](std::string_view key) { return desktop.defaultOnDisk(key).has_value(); };
  EXPECT_FALSE(onDisk("eventual"));
  EXPECT_TRUE(onDisk("immediate"));
  desktop.run(1);
  EXPECT_TRUE(onDisk("eventual"));
  EXPECT_FALSE(onDisk("journal"));

  EXPECT_TRUE(defaults.set("eventual", 2.0));
  SimulatedPlatform afterCrash(desktop.snapshot());
  EXPECT_EQ(afterCrash.userDefaults().value("eventual"), DefaultsValue(1.0));
  platform.process().exit(0);
  SimulatedPlatform afterExit(desktop.snapshot());
  EXPECT_EQ(afterExit.userDefaults().value("eventual"), DefaultsValue(2.0));
}

TEST_F(SimulatedDesktopTest, ACrashIsACopyBetweenTwoCalls) {
  const auto list = desktop.launch("Notes").openWindow("Shopping", home);
  for (std::uint64_t call = 1; call <= 3; ++call) {
    desktop.setDefault("journal", false);
    desktop.crashAtPortCall(call);
    EXPECT_TRUE(platform.userDefaults().set("journal", true, Durability::immediate));
    EXPECT_TRUE(list.element().setAttribute("AXPosition", QuartzPoint{1439, 872}));
    platform.clock().sleep(0.1);
    list.moveTo(home.origin);
    SimulatedPlatform next(*desktop.crash());
    EXPECT_EQ(next.userDefaults().value("journal"), DefaultsValue(call > 1));
    EXPECT_EQ(next.desktop().counterpart(list).frame().minX(), call > 2 ? 1439 : 100);
  }
}

TEST_F(SimulatedDesktopTest, NothingOfAnEndedProcessRuns) {
  const auto list = desktop.launch("Notes").openWindow("Shopping", home);
  Lines done;
  const auto queue = platform.queues().makeSerialQueue("com.velloway.pellow.actions");
  auto running = queue->async([&] {
    platform.clock().sleep(1);
    const auto moved = list.element().setAttribute("AXPosition", QuartzPoint{1439, 872});
    done.push_back(moved ? "moved" : "not moved");
  });
  const auto waiting = queue->async([&] { done.push_back("waiting"); });
  const auto later = mainQueue.after(2, [&] { done.push_back("later"); });
  const auto handler = platform.process().onSignal(TerminationSignal::terminate, [&] {
    platform.process().exit(3);
    done.push_back("after exit");
    EXPECT_FALSE(platform.workspace().hide(list.pid()));
  });
  const auto panel = platform.panels().makePanel("pellow-strip");
  panel->orderFront();
  desktop.after(0.5, [&] { desktop.signal(TerminationSignal::terminate); });
  desktop.runUntilQuiet();
  EXPECT_FALSE(desktop.processRuns());
  EXPECT_EQ(desktop.exitStatus(), 3);
  EXPECT_EQ(done, (Lines{"after exit", "not moved"}));
  EXPECT_EQ(list.frame(), home);
  EXPECT_TRUE(desktop.panels("pellow-strip").empty());

  // Without a handler a signal is the end; with one that has left it is ignored.
  SimulatedPlatform next(desktop.snapshot());
  next.process().onSignal(TerminationSignal::hangUp, [] { FAIL(); }).cancel();
  next.desktop().signal(TerminationSignal::hangUp);
  next.desktop().runUntilQuiet();
  EXPECT_TRUE(next.desktop().processRuns());
  next.desktop().signal(TerminationSignal::interrupt);
  EXPECT_FALSE(next.desktop().processRuns());
}

}  // namespace
}  // namespace pellow::simulated
