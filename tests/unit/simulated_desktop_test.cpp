#include <gtest/gtest.h>

#include <memory>
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
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const auto history = busyHistory(seed);
    EXPECT_EQ(history, busyHistory(seed));
    different += history != busyHistory(seed + 100);
    // Of one queue, whatever the other does, the order stays.
    std::vector<Lines> byQueue(2);
    for (const auto& line : history)
      for (const std::size_t queue : {0, 1})
        if (line.starts_with(queue == 0 ? "left " : "right ")) byQueue[queue].push_back(line);
    for (auto& lines : byQueue) {
      EXPECT_EQ(lines.size(), 5);
      for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_NE(lines[i].find(fmt::format(" {} ", i)), std::string::npos);
    }
  }
  EXPECT_GT(different, 15);
}

TEST(SimulatedScheduler, TheSeedDecidesBetweenEquals) {
  // Both orders of two queues that read at the same moment come up.
  std::vector<Lines> orders;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    SimulatedPlatform platform({.seed = seed});
    auto& desktop = platform.desktop();
    Lines order;
    const auto first = platform.queues().makeSerialQueue("first");
    const auto second = platform.queues().makeSerialQueue("second");
    const auto a = first->async([&] { order.push_back("first"); });
    const auto b = second->async([&] { order.push_back("second"); });
    desktop.runUntilQuiet();
    ASSERT_EQ(order.size(), 2);
    if (std::ranges::find(orders, order) == orders.end()) orders.push_back(order);
  }
  EXPECT_EQ(orders.size(), 2);
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
  desktop.run(0.5);
  EXPECT_EQ(done, Lines{"soon 0.0"});
  EXPECT_EQ(desktop.now(), start + 0.5);
  desktop.run(0.5);
  EXPECT_EQ(done.back(), "tick 1.0");
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

TEST_F(SimulatedDesktopTest, DroppingSerialWorkDropsItOrWaitsForItsEnd) {
  const auto queue = platform.queues().makeSerialQueue("com.velloway.pellow.actions");
  Lines done;
  auto running = queue->async([&] {
    platform.clock().sleep(2);
    done.push_back("running");
  });
  auto waiting = queue->async([&] { done.push_back("waiting"); });
  auto kept = queue->async([&] { done.push_back("kept"); });
  desktop.run(1);
  EXPECT_TRUE(done.empty());
  waiting.cancel();
  running.cancel();
  EXPECT_EQ(done, Lines{"running"});
  EXPECT_EQ(desktop.now(), 2);
  desktop.runUntilQuiet();
  EXPECT_EQ(done, (Lines{"running", "kept"}));

  // Results travel by the main queue, in order.
  Subscription back;
  auto there = queue->async([&] {
    platform.clock().sleep(1);
    back = mainQueue.async([&] { done.push_back("back"); });
  });
  desktop.runUntilQuiet();
  EXPECT_EQ(done.back(), "back");

  // A queue that ends waits for what runs and drops the rest.
  auto ending = platform.queues().makeSerialQueue("ending");
  auto last = ending->async([&] {
    platform.clock().sleep(1);
    done.push_back("last");
  });
  auto tooLate = ending->async([&] { done.push_back("too late"); });
  desktop.run(0.5);
  ending = nullptr;
  EXPECT_EQ(done.back(), "last");
}

using SimulatedDesktopDeathTest = SimulatedDesktopTest;

TEST_F(SimulatedDesktopDeathTest, WhatCanNeverRunIsSaidSo) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto waitForItself = [&] {
    const auto queue = platform.queues().makeSerialQueue("com.velloway.pellow.actions");
    Subscription own;
    own = queue->async([&] {
      platform.clock().sleep(1);
      own.cancel();
    });
    desktop.runUntilQuiet();
  };
  EXPECT_DEATH(waitForItself(),
               "Nothing can ever run again.*\n.*main waits for something to do.*\n"
               ".*actions waits for the end of the running work of com.velloway.pellow.actions");
}

TEST_F(SimulatedDesktopTest, WindowsAnswerLikeThoseOfAMac) {
  const auto notes = desktop.launch("Notes", "com.example.notes");
  const auto list = notes.openWindow("Shopping", home);
  const auto letter = notes.openWindow("Letter", {0, 50, 300, 200}, "AXDialog");
  const auto inbox = desktop.launch("Mail").openWindow("Inbox", {0, 30, 500, 500});
  const auto element = list.element();
  EXPECT_EQ(read<std::string>(element, "AXRole"), "AXWindow");
  EXPECT_EQ(read<std::string>(letter.element(), "AXSubrole"), "AXDialog");
  EXPECT_EQ(read<std::string>(element, "AXTitle"), "Shopping");
  EXPECT_EQ(read<AXElement>(element, "AXParent"), notes.element());
  EXPECT_EQ(element.pid().value(), notes.pid());
  EXPECT_EQ(read<std::vector<AXElement>>(notes.element(), "AXWindows"),
            (std::vector{letter.element(), list.element()}));
  EXPECT_EQ(element.copyAttribute("AXGrowArea").error(), AXError::attributeUnsupported);
  EXPECT_EQ(element.performAction("AXPress").error(), AXError::actionUnsupported);
  EXPECT_EQ(element.setAttribute("AXPosition", true).error(), AXError::illegalArgument);
  desktop.setTrusted(false);
  EXPECT_EQ(element.copyAttribute("AXTitle").error(), AXError::apiDisabled);
  desktop.setTrusted(true);

  // Focus and order follow what the user and the program do.
  EXPECT_TRUE(inbox.hasFocus());
  EXPECT_TRUE(platform.workspace().activate(notes.pid()));
  EXPECT_TRUE(letter.hasFocus());
  EXPECT_TRUE(letter.isInFront());
  EXPECT_TRUE(letter.element().setAttribute("AXMinimized", true).has_value());
  EXPECT_TRUE(list.hasFocus());
  EXPECT_EQ(read<AXElement>(notes.element(), "AXFocusedWindow"), element);
  EXPECT_EQ(read<std::vector<AXElement>>(notes.element(), "AXWindows").back(), letter.element());
  EXPECT_TRUE(platform.workspace().hide(notes.pid()));
  EXPECT_TRUE(inbox.hasFocus());
  EXPECT_FALSE(list.isVisible());
  EXPECT_TRUE(element.performAction("AXRaise").has_value());
  EXPECT_TRUE(inbox.isInFront());
  platform.workspace().unhide(notes.pid());
  EXPECT_TRUE(list.isVisible());
  EXPECT_TRUE(inbox.isInFront()) << "a raise stays behind the frontmost application";
  desktop.click({850, 900 - 200});
  desktop.runUntilQuiet();
  EXPECT_TRUE(list.hasFocus());
  EXPECT_TRUE(list.isInFront());
  notes.refusesToHide();
  EXPECT_FALSE(platform.workspace().hide(notes.pid()));

  // What is gone stays gone, and is announced when it is.
  Lines heard;
  const auto closed = platform.accessibility().observe(
      element, "AXUIElementDestroyed",
      [&](const AXElement&) { heard.push_back(fmt::format("window {}", list.exists())); });
  const auto quit = platform.workspace().onDidTerminateApplication([&](ProcessID pid) {
    heard.push_back(fmt::format("application {} {}", pid == notes.pid(), notes.isRunning()));
  });
  notes.quit();
  EXPECT_TRUE(heard.empty());
  desktop.runUntilQuiet();
  EXPECT_EQ(heard, (Lines{"window false", "application true false"}));
  EXPECT_TRUE(inbox.hasFocus());
  EXPECT_EQ(element.copyAttribute("AXRole").error(), AXError::invalidUIElement);
  EXPECT_EQ(element.pid().error(), AXError::invalidUIElement);
  EXPECT_EQ(notes.element().copyAttribute("AXWindows").error(), AXError::invalidUIElement);
  EXPECT_EQ(platform.accessibility()
                .observe(element, "AXUIElementDestroyed", [](const AXElement&) {})
                .error(),
            AXError::invalidUIElement);
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
  list.refusesToMove();
  EXPECT_EQ(placeAfterMove({50, 60}), (QuartzPoint{0, 25}));
  list.behaves().movesTo([](QuartzPoint asked) { return QuartzPoint{asked.x + 3, asked.y}; });
  EXPECT_EQ(placeAfterMove({50, 60}), (QuartzPoint{53, 60}));

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
  // The main thread waits for the window, the window's user does not wait for the main thread.
  list.answersAfter(0.2);
  desktop.after(0.1, [&] { list.rename("Errands"); });
  EXPECT_EQ(read<std::string>(element, "AXTitle"), "Errands");

  // Ordered faults, once or always, by name and kind, and then the end.
  list.behaves().failsNext("AXRaise", AXError::failure);
  EXPECT_TRUE(element.copyAttribute("AXTitle").has_value());
  EXPECT_EQ(element.performAction("AXRaise").error(), AXError::failure);
  EXPECT_TRUE(element.performAction("AXRaise").has_value());
  list.fails("AXPosition", AXError::notImplemented, AXCall::write);
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(element.copyAttribute("AXPosition").has_value());
    EXPECT_EQ(element.setAttribute("AXPosition", QuartzPoint{}).error(), AXError::notImplemented);
  }
  desktop.failNext("AXTitle", AXError::noValue);
  EXPECT_EQ(element.copyAttribute("AXTitle").error(), AXError::noValue);
  EXPECT_TRUE(element.copyAttribute("AXTitle").has_value());
  list.closesDuring(2);
  EXPECT_TRUE(element.copyAttribute("AXTitle").has_value());
  EXPECT_EQ(element.copyAttribute("AXTitle").error(), AXError::invalidUIElement);
  EXPECT_FALSE(list.exists());
}

TEST_F(SimulatedDesktopTest, DisplaysComeAndGo) {
  int changes = 0;
  const auto observer = platform.screens().onDidChangeParameters([&] { ++changes; });
  EXPECT_EQ(platform.screens().all()[0].visibleFrame, AppKitRect(0, 70, 1440, 805));
  desktop.plug(2, {1440, -180, 1920, 1080});
  desktop.runUntilQuiet();
  EXPECT_EQ(changes, 1);
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
  desktop.setVisibleFrame(3, {0, 0, 800, 600});
  desktop.runUntilQuiet();
  EXPECT_EQ(changes, 5);
  EXPECT_EQ(platform.screens().main()->visibleFrame, AppKitRect(0, 0, 800, 600));
}

TEST_F(SimulatedDesktopTest, TheUserClicksWhatLiesOnTop) {
  Lines done;
  const auto button = [&](std::string key, ViewRect frame) {
    return View{.key = key,
                .frame = frame,
                .look = {.accessibleName = "the " + key},
                .actions = {[&done, key] { done.push_back("click " + key); },
                            [&done, key](bool inside) {
                              done.push_back((inside ? "enter " : "leave ") + key);
                            }}};
  };
  View list{.key = "list", .frame = {10, 10, 100, 60}};
  list.children = {button("below", {0, 0, 100, 30}), button("above", {0, 20, 100, 40}),
                   View{.key = "decoration", .frame = {0, 0, 100, 60}}};
  View root{.key = "root", .frame = {0, 0, 120, 80}, .children = {list}};
  const auto panel = platform.panels().makePanel("pellow-strip");
  panel->setContent(root);
  panel->setFrame({200, 300, 120, 80});
  EXPECT_TRUE(desktop.panels("pellow-strip").empty());
  panel->orderFront();
  EXPECT_EQ(desktop.panel("pellow-strip").viewNamed("the above")->key, "above");

  desktop.click({250, 335});  // where the two overlap
  desktop.runUntilQuiet();
  EXPECT_EQ(done, (Lines{"enter below", "enter above", "click above"}));
  done.clear();
  // A new tree with the same keys disturbs nobody; one without a view under the pointer does.
  panel->setContent(root);
  desktop.runUntilQuiet();
  EXPECT_TRUE(done.empty());
  panel->setFrame({200, 320, 120, 80});
  desktop.runUntilQuiet();
  EXPECT_EQ(done, Lines{"leave above"});
  done.clear();
  desktop.clickView("pellow-strip", "list/above");
  EXPECT_TRUE(done.empty()) << "nothing reaches the program but in its main loop";
  desktop.runUntilQuiet();
  EXPECT_EQ(done, Lines{"click above"});
  EXPECT_THROW(desktop.clickView("pellow-strip", "list/decoration"), std::out_of_range);

  // Windows cover panels of the desktop's level.
  panel->setLevel(PanelLevel::desktopIcons);
  const auto cover = desktop.launch("Notes").openWindow("Cover", {0, 0, 1440, 900});
  desktop.movePointer({0, 0});
  desktop.runUntilQuiet();
  done.clear();
  desktop.click({250, 355});
  desktop.runUntilQuiet();
  EXPECT_TRUE(done.empty());
  cover.minimize();
  desktop.click({250, 355});
  desktop.runUntilQuiet();
  EXPECT_EQ(done.back(), "click above");
}

TEST_F(SimulatedDesktopTest, KeysAndAlertsReachTheRightOne) {
  Lines done;
  auto& monitors = platform.eventMonitors();
  const auto global = monitors.addGlobalKeyDown(
      [&](const KeyEvent& event) { done.push_back(fmt::format("global {}", event.keyCode)); });
  const auto older = monitors.addLocalKeyDown([&](const KeyEvent& event) {
    done.push_back(fmt::format("older {}", event.charactersIgnoringModifiers));
    return true;
  });
  Subscription own;
  auto newer = monitors.addLocalKeyDown([&](const KeyEvent&) {
    done.push_back("newer");
    own.cancel();
    return false;
  });
  own = std::move(*newer);
  desktop.press(17, modifier::command);
  desktop.setProgramHasKeyboard(true);
  desktop.runUntilQuiet();
  EXPECT_EQ(done, Lines{"newer"}) << "swallowed";
  desktop.press(17, modifier::command, "t");
  desktop.runUntilQuiet();
  EXPECT_EQ(done, (Lines{"newer", "older t"}));
  desktop.setProgramHasKeyboard(false);
  desktop.press(15);
  desktop.runUntilQuiet();
  EXPECT_EQ(done.back(), "global 15");
  desktop.allowMonitors(false);
  EXPECT_FALSE(monitors.addGlobalKeyDown([](const KeyEvent&) {}));

  const auto window = desktop.launch("Notes").openWindow("Shopping", home);
  platform.process().activate();
  Subscription shown;
  shown = platform.alerts().show({.messageText = "Sure?", .buttons = {"OK", "Cancel"}},
                                 [&](std::size_t button) {
                                   shown.cancel();
                                   done.push_back(fmt::format("button {}", button));
                                 });
  auto dropped = platform.alerts().show({.messageText = "Never answered", .buttons = {"OK"}},
                                        [](std::size_t) { FAIL(); });
  EXPECT_FALSE(window.hasFocus());
  EXPECT_THROW(desktop.choose("Maybe"), std::out_of_range);
  desktop.choose("Cancel");
  desktop.runUntilQuiet();
  EXPECT_EQ(done.back(), "button 1");
  desktop.choose("OK");
  dropped.cancel();
  desktop.runUntilQuiet();
  EXPECT_TRUE(desktop.alerts().empty());
  EXPECT_TRUE(window.hasFocus());
}

TEST_F(SimulatedDesktopTest, AFailedWriteOfTheDefaultsIsLostInACrash) {
  auto& defaults = platform.userDefaults();
  defaults.registerDefaults({{"mechanism", "offscreen"}});
  EXPECT_TRUE(defaults.set("eventual", 1.0));
  EXPECT_TRUE(defaults.set("immediate", 1.0, Durability::immediate));
  desktop.failNextDefaultsWrite({"The disk is full."}, "journal");
  EXPECT_TRUE(defaults.set("other", true, Durability::immediate));
  EXPECT_EQ(defaults.set("journal", true, Durability::immediate).error().sentence,
            "The disk is full.");
  EXPECT_EQ(defaults.value("journal"), DefaultsValue(true));
  EXPECT_EQ(defaults.value("mechanism"), DefaultsValue("offscreen"));
  EXPECT_EQ(desktop.storedDefault("mechanism"), std::nullopt);
  const auto onDisk = [&](std::string_view key) { return desktop.defaultOnDisk(key).has_value(); };
  EXPECT_FALSE(onDisk("eventual"));
  EXPECT_TRUE(onDisk("immediate"));
  desktop.run(1);
  EXPECT_TRUE(onDisk("eventual"));
  EXPECT_FALSE(onDisk("journal"));

  EXPECT_TRUE(defaults.set("eventual", 2.0));
  const auto made = platform.uuidSource().next();
  SimulatedPlatform afterCrash(desktop.snapshot());
  EXPECT_EQ(afterCrash.userDefaults().value("eventual"), DefaultsValue(1.0));
  EXPECT_EQ(afterCrash.desktop().now(), desktop.now());
  EXPECT_NE(afterCrash.uuidSource().next(), made);
  platform.process().exit(0);
  SimulatedPlatform afterExit(desktop.snapshot());
  EXPECT_EQ(afterExit.userDefaults().value("eventual"), DefaultsValue(2.0));
}

TEST_F(SimulatedDesktopTest, ACrashIsACopyBetweenTwoCalls) {
  const auto list = desktop.launch("Notes").openWindow("Shopping", home);
  const auto parkInTwoSteps = [&] {
    EXPECT_TRUE(platform.userDefaults().set("journal", true, Durability::immediate));
    EXPECT_TRUE(list.element().setAttribute("AXPosition", QuartzPoint{1439, 872}));
    platform.clock().sleep(0.1);
    list.moveTo(home.origin);
  };
  for (std::uint64_t call = 1; call <= 4; ++call) {
    desktop.setDefault("journal", false);
    desktop.crashAtPortCall(call);
    parkInTwoSteps();
    if (call == 4) {
      EXPECT_FALSE(desktop.crash());
      break;
    }
    SimulatedPlatform next(*desktop.crash());
    EXPECT_EQ(next.userDefaults().value("journal"), DefaultsValue(call > 1));
    EXPECT_EQ(next.desktop().counterpart(list).frame().minX(), call > 2 ? 1439 : 100);
    EXPECT_NE(next.process().pid(), platform.process().pid());
    EXPECT_EQ(next.workspace().runningApplications().size(), 2);
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
  auto waiting = queue->async([&] { done.push_back("waiting"); });
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
  SimulatedPlatform next(desktop.snapshot(), {.arguments = {"--demo"}});
  EXPECT_EQ(next.process().arguments()[0], "--demo");
  {
    const auto ignored = next.process().onSignal(TerminationSignal::hangUp, [] { FAIL(); });
  }
  next.desktop().signal(TerminationSignal::hangUp);
  next.desktop().runUntilQuiet();
  EXPECT_TRUE(next.desktop().processRuns());
  next.desktop().signal(TerminationSignal::interrupt);
  EXPECT_FALSE(next.desktop().processRuns());
  EXPECT_EQ(next.desktop().exitStatus(), std::nullopt);

  // The normal end: the loop, the program's last words, the process.
  SimulatedPlatform last(next.desktop().snapshot());
  last.desktop().onTerminate([&] { done.push_back("will terminate"); });
  const auto work = last.queues().main().async([&] {
    last.process().terminate();
    done.push_back("asked");
  });
  const auto never = last.queues().main().async([&] { done.push_back("never"); });
  last.desktop().runUntilQuiet();
  EXPECT_EQ(last.desktop().exitStatus(), 0);
  EXPECT_EQ(done, (Lines{"after exit", "not moved", "asked", "will terminate"}));
}

}  // namespace
}  // namespace pellow::simulated
