#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/json.h"
#include "tests/unit/program.h"

// From a key press to a tab and back, as the user sees it.

namespace pellow {
namespace {

constexpr QuartzRect home{100, 120, 800, 600};
constexpr auto failed = "Pellow could not complete that action\n";

class RoadStory : public Story {
 protected:
  simulated::Window openNotes(const std::string& title = "Shopping", QuartzRect frame = home) {
    if (!notes) notes = desktop.launch("Notes", "com.example.notes");
    return notes->openWindow(title, frame);
  }

  std::optional<simulated::Application> notes;
};

TEST_F(RoadStory, AShortcutOfTheDesktopIsToldAtTheStart) {
  desktop.setTexts(x11Texts);
  desktop.symbolicHotKeys().reserve(17, Program::modifiers);
  launch();
  const std::string too = " belongs to a desktop shortcut too: both will act on it";
  EXPECT_TRUE(desktop.hasLogged("Ctrl+Alt+Super+T" + too));
  EXPECT_FALSE(desktop.hasLogged("Ctrl+Alt+Super+R" + too));
}

TEST_F(RoadStory, AWindowBecomesATabAndComesBack) {
  const auto list = openNotes();
  launch();
  EXPECT_TRUE(program->tabs().empty());

  // The window must never be away from home without a record that survives a crash.
  bool movedUnrecorded = false;
  desktop.onPortCall([&](std::uint64_t) {
    if (list.frame() == home) return;
    movedUnrecorded |= !desktop.userDefaults().afterCrash("parkedWindows");
  });
  program->pressPellow();
  desktop.onPortCall(nullptr);
  EXPECT_FALSE(movedUnrecorded);
  EXPECT_EQ(list.frame(), QuartzRect(1439, 872, 800, 600));
  EXPECT_EQ(program->tabs(), std::vector<std::string>{"Shopping"});
  EXPECT_EQ(
      program->journalAfterCrash(),
      (std::vector<ParkingRecord>{{"com.example.notes", "Shopping", home.origin, {1439, 872}}}));

  const auto& strip = desktop.panels().panel("pellow-strip");
  EXPECT_EQ(strip.frame().maxX(), 1440 - 6);
  EXPECT_EQ(strip.level(), PanelLevel::statusWindow);
  EXPECT_EQ(strip.shadow(), WindowShadow::yes);

  desktop.launch("Mail", "com.example.mail").openWindow("Inbox", {0, 30, 500, 500});
  program->clickTab("Shopping");
  EXPECT_EQ(list.frame(), home);
  EXPECT_TRUE(list.isInFront());
  EXPECT_TRUE(list.hasFocus());
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_TRUE(program->journalAfterCrash().empty());
  EXPECT_TRUE(desktop.alerts().showing().empty());
}

TEST_F(RoadStory, OneKeyBringsBackTheTabsOfEveryMechanism) {
  openNotes("Letter", {300, 200, 400, 300});
  launch();

  desktop.userDefaults().put("mechanism", "hideApp");
  program->pressPellow();
  desktop.userDefaults().put("mechanism", "minimize");
  const auto inbox = desktop.launch("Mail").openWindow("Inbox", {0, 30, 500, 500});
  program->pressPellow();
  desktop.userDefaults().put("mechanism", "offscreen");
  const auto page = desktop.launch("Web").openWindow("Page", {50, 60, 700, 500});
  program->pressPellow();
  EXPECT_EQ(program->tabs(), (std::vector<std::string>{"Letter", "Inbox", "Page"}));
  EXPECT_TRUE(program->journalAfterCrash().empty()) << "Web has no identifier to find it by";
  program->pressRestoreAll();
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_FALSE(notes->isHidden());
  EXPECT_FALSE(inbox.isMinimized());
  EXPECT_EQ(page.frame(), QuartzRect(50, 60, 700, 500));
}

TEST_F(RoadStory, AWindowIsPutAwayOnce) {
  const auto list = openNotes();
  launch();
  list.answersAfter(0.2);
  desktop.keyboard().press(17, Program::modifiers);
  desktop.keyboard().press(17, Program::modifiers);
  desktop.runUntilQuiet();
  EXPECT_EQ(program->tabs().size(), 1);

  EXPECT_EQ(program->journalAfterCrash().size(), 1);
  EXPECT_TRUE(desktop.alerts().showing().empty());
  // A press while it comes back puts it away again once it has arrived.
  desktop.keyboard().press(15, Program::modifiers);
  desktop.run(0.5);
  desktop.keyboard().press(17, Program::modifiers);
  desktop.keyboard().press(17, Program::modifiers);
  desktop.runUntilQuiet();
  EXPECT_EQ(program->tabs().size(), 1);
  EXPECT_EQ(program->journalAfterCrash().size(), 1);
  EXPECT_LE(list.shareOnDisplays(), 0.05);
  program->pressRestoreAll();
  EXPECT_EQ(list.frame(), home);
  EXPECT_TRUE(program->tabs().empty());
}

TEST_F(RoadStory, TheZoneChoosesTheSideAndThePinTheZone) {
  const auto id = [](char letter) {
    return *UUID::parse(letter + std::string("0000000-0000-0000-0000-000000000000"));
  };
  const auto store = [&](const char* key, const nlohmann::json& value) {
    desktop.userDefaults().put(key, DefaultsData{value.dump()});
  };
  store("zones", std::vector<TabZone>{
                     {.id = id('A'), .name = "A", .position = {0.5, 0}, .snap = StripEdge::top},
                     {.id = id('B'), .name = "B", .position = {0.49, 0.5}},
                     {.id = id('C'), .name = "C", .position = {0, 0.5}, .snap = StripEdge::left}});
  store("pinnedApps", {{"com.example.mail", id('C').text()}, {"com.example.web", id('B').text()}});
  const auto list = openNotes();
  launch();
  program->pressPellow();
  EXPECT_EQ(list.frame().minX(), 1439);

  const auto inbox =
      desktop.launch("Mail", "com.example.mail").openWindow("Inbox", {0, 30, 500, 500});
  program->pressPellow();
  EXPECT_EQ(inbox.frame().minX(), 1 - 500);

  const auto page = desktop.launch("Web", "com.example.web").openWindow("Page", {50, 60, 700, 500});
  program->pressPellow();
  EXPECT_EQ(page.frame().minX(), 1 - 700);

  ASSERT_EQ(desktop.panels().visible("pellow-strip").size(), 3);
  for (const auto* panel : desktop.panels().visible("pellow-strip"))
    EXPECT_EQ(panel->view("tabs")->children.size(), 1);
}

TEST_F(RoadStory, AWindowThatStaysInSightGoesBackAndHasNoTab) {
  const auto list = openNotes();
  launch();
  const auto refusal = std::string(failed) + "Notes will not let its window be moved off-screen.";
  list.refusesToMove();
  program->pressPellow();
  EXPECT_EQ(list.frame(), home);
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_TRUE(program->journalAfterCrash().empty());
  ASSERT_EQ(desktop.alerts().showing().size(), 1);
  EXPECT_EQ(desktop.alerts().showing()[0].style, AlertStyle::warning);
  EXPECT_EQ(program->answerAlert(), refusal);
  EXPECT_TRUE(desktop.alerts().showing().empty());

  // First six percent of its width stays on the display, then five.
  const auto stopsAt = [](double x) {
    return [x](QuartzPoint asked) { return QuartzPoint{std::min(asked.x, x), asked.y}; };
  };
  const auto fullHeight = QuartzRect{100, 0, 800, 20};
  list.behaves().moveTo(fullHeight.origin);
  list.resize(fullHeight.size);
  list.movesTo(stopsAt(1440 - 48));
  program->pressPellow();
  EXPECT_EQ(list.frame(), fullHeight);
  EXPECT_EQ(program->answerAlert(), refusal);
  list.movesTo(stopsAt(1440 - 40));
  program->pressPellow();
  EXPECT_EQ(program->tabs().size(), 1);
  program->pressRestoreAll();
  EXPECT_EQ(list.frame(), fullHeight);

  // What cannot be recorded is not hidden.
  list.behaves().moveTo(home.origin);
  list.resize(home.size);
  desktop.userDefaults().failNextWrite({"The disk is full."}, "parkedWindows");
  program->pressPellow();
  EXPECT_EQ(list.frame(), home);
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_TRUE(desktop.hasLogged("Could not write the parked-window journal: The disk is full."));
}

TEST_F(RoadStory, FailuresAreToldAndLoseNothing) {
  const auto list = openNotes();
  const auto letter = openNotes("Letter", {300, 200, 400, 300});
  desktop.userDefaults().put("mechanism", "minimize");
  launch();

  letter.failsNext("AXMinimized", AXError::cannotComplete, simulated::AXCall::write);
  program->pressPellow();
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_EQ(
      program->answerAlert(),
      std::string(failed) + "Could not minimize the window (the app did not respond in time).");

  // Neither window comes back: both keep their tabs, and one alert reports both.
  program->pressPellow();
  list.raise();
  program->pressPellow();
  ASSERT_EQ(program->tabs().size(), 2);
  for (const auto& window : {list, letter})
    window.failsNext("AXMinimized", AXError::cannotComplete, simulated::AXCall::write);
  program->pressRestoreAll();
  EXPECT_EQ(program->tabs().size(), 2);
  EXPECT_EQ(program->answerAlert(),
            std::string(failed) +
                "Could not restore the window (the app did not respond in time).\n\nAnd 1 more.");

  // A window that comes back but not to the front is back.
  letter.failsNext("AXRaise", AXError::cannotComplete);
  program->pressRestoreAll();
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_TRUE(desktop.hasLogged(
      "raise failed after successful restore: Could not bring the window to the front (the app did "
      "not respond in time)."));
  EXPECT_TRUE(desktop.alerts().showing().empty());

  // Nothing to pellow.
  notes->quit();
  program->pressPellow();
  EXPECT_EQ(program->answerAlert(), std::string(failed) + "No focused window to pellow.");
}

TEST_F(RoadStory, AnApplicationIsHiddenWhenItSaysSo) {
  const auto list = openNotes();
  desktop.userDefaults().put("mechanism", "hideApp");
  launch();
  notes->hidesAfter(0.3);
  program->pressPellow();
  EXPECT_EQ(program->tabs().size(), 1);
  EXPECT_TRUE(notes->isHidden());
  program->clickTab("Shopping");
  EXPECT_TRUE(list.hasFocus());

  // One that says yes but stays must not hide later either, with no tab to bring it back.
  for (const auto delay : {simulated::never, Seconds{1}}) {
    notes->hidesAfter(delay);
    program->pressPellow();
    EXPECT_TRUE(program->tabs().empty());
    EXPECT_TRUE(list.isVisible());
    EXPECT_EQ(program->answerAlert(), std::string(failed) + "macOS refused to hide that app.");
    notes->activate();
  }
}

// Restoring a window shows its whole application, so hiding the application waits for that.
TEST_F(RoadStory, AnApplicationIsHiddenWhenItsWindowsAreBack) {
  const auto list = openNotes();
  const auto notes = desktop.application("Notes");
  const auto letter = notes.openWindow("Letter", {300, 200, 400, 300});
  launch();
  program->pressPellow();
  ASSERT_EQ(program->tabs(), std::vector<std::string>{"Letter"});
  desktop.userDefaults().put("mechanism", "hideApp");
  desktop.pointer().click(program->tab("Letter"));
  list.raise();
  desktop.keyboard().press(17, Program::modifiers);
  desktop.runUntilQuiet();
  EXPECT_EQ(letter.frame(), QuartzRect(300, 200, 400, 300));
  EXPECT_TRUE(notes.isHidden());
  EXPECT_EQ(program->tabs().size(), 1);
}

TEST_F(RoadStory, AWindowComesToTheFrontWhereActivationsAreWishes) {
  const auto list = openNotes();
  launch();
  for (const auto* mechanism : {"offscreen", "minimize", "hideApp"}) {
    SCOPED_TRACE(mechanism);
    desktop.userDefaults().put("mechanism", mechanism);
    list.raise();
    notes->activate();
    program->pressPellow();
    ASSERT_EQ(program->tabs().size(), 1);
    desktop.launch("Mail").openWindow("Inbox", {0, 30, 500, 500});
    desktop.workspace().ignoreActivations();
    program->clickTab("Shopping");
    EXPECT_TRUE(list.hasFocus());
    EXPECT_TRUE(list.isInFront());
    EXPECT_TRUE(desktop.alerts().showing().empty());
    desktop.workspace().ignoreActivations(false);
    desktop.application("Mail").quit();
  }
}

TEST_F(RoadStory, AWindowWhoseFateIsUnknownKeepsATab) {
  const auto list = openNotes();
  launch();
  // Once the record is written, the application takes 8 s for everything, but still does it.
  desktop.onPortCall([&](std::uint64_t) {
    if (desktop.userDefaults().afterCrash("parkedWindows")) list.answersAfter(8).actsLate();
  });
  desktop.keyboard().press(17, Program::modifiers);
  desktop.run(10.5);
  desktop.onPortCall(nullptr);
  EXPECT_LT(list.shareOnDisplays(), 0.05);
  EXPECT_EQ(program->tabs().size(), 1);
  EXPECT_EQ(program->journalAfterCrash().size(), 1);
  ASSERT_EQ(desktop.alerts().showing().size(), 1);

  desktop.runUntilQuiet();
  list.behaves();
  program->clickTab("Shopping");
  EXPECT_EQ(list.frame(), home);
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_TRUE(program->journalAfterCrash().empty());
}

TEST_F(RoadStory, AWindowThatSaysItIsGoneIsAskedFirst) {
  const auto list = openNotes();
  launch();
  program->pressPellow();
  list.orderOut();
  desktop.runUntilQuiet();
  EXPECT_EQ(program->tabs(), std::vector<std::string>{"Shopping"});
  EXPECT_EQ(program->journalAfterCrash().size(), 1);
  program->clickTab("Shopping");
  EXPECT_EQ(list.frame(), home);
}

TEST_F(RoadStory, AClosedWindowLeavesNoTabAndNoRecord) {
  const auto list = openNotes();
  const auto letter = openNotes("Letter", {300, 200, 400, 300});
  launch();
  program->pressPellow();
  list.raise();
  program->pressPellow();
  ASSERT_EQ(program->tabs().size(), 2);

  letter.close();
  desktop.runUntilQuiet();
  EXPECT_EQ(program->tabs(), std::vector<std::string>{"Shopping"});
  EXPECT_EQ(program->journalAfterCrash().size(), 1);
  notes->quit();
  desktop.runUntilQuiet();
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_TRUE(program->journalAfterCrash().empty());
  EXPECT_TRUE(desktop.alerts().showing().empty());
}

// Closes the window during its nth call, for every n on the way out and back.
TEST(RoadStories, AWindowMayCloseAtAnyMoment) {
  // Until n is beyond the last call.
  int call = 0;
  for (bool wasClosed = true; wasClosed;) {
    simulated::Desktop desktop;
    const auto list = desktop.launch("Notes", "com.example.notes").openWindow("Shopping", home);
    Program program(desktop);
    list.closesDuring(++call);
    program.pressPellow();
    program.pressRestoreAll();
    wasClosed = !list.exists();
    while (!desktop.alerts().showing().empty()) {
      desktop.alerts().choose("OK");
      desktop.runUntilQuiet();
    }
    EXPECT_TRUE(program.tabs().empty()) << "closed during call " << call;
    EXPECT_TRUE(program.journalAfterCrash().empty()) << "closed during call " << call;
    EXPECT_TRUE(program.controller().isIdle());
  }
  EXPECT_GT(call, 6);
}

TEST_F(RoadStory, AWindowComesBackOntoADisplay) {
  desktop.screens().plug(2, {1440, 0, 1920, 1080});
  const auto far = openNotes("Far", {2000, 100, 800, 600});
  launch();
  program->pressPellow();
  EXPECT_EQ(far.frame().minX(), 1440 + 1920 - 1);
  desktop.screens().unplug(2);
  desktop.runUntilQuiet();
  program->clickTab("Far");
  // The menu bar takes 25 points at the top, the Dock 70 at the bottom.
  EXPECT_EQ(far.frame(), QuartzRect(1440 - 800, 100, 800, 600));
  EXPECT_TRUE(desktop.hasLogged("Original frame is no longer on a display; clamping the restore"));

  // 60 % of it still on the display is enough to go back there.
  const auto half = QuartzRect{-320, 200, 800, 600};
  far.moveTo(half.origin);
  program->pressPellow();
  program->clickTab("Far");
  EXPECT_EQ(far.frame(), half);

  // Too wide for the display: at its left edge.
  const auto wide = QuartzRect{-2000, 100, 3000, 600};
  far.moveTo(wide.origin);
  far.resize(wide.size);
  program->pressPellow();
  program->clickTab("Far");
  EXPECT_EQ(far.frame().minX(), 0);
}

TEST_F(RoadStory, ParkedWindowsFollowTheDisplays) {
  const auto one = openNotes("One", {200, 100, 800, 600});
  const auto two = openNotes("Two", {300, 200, 800, 600});
  launch();
  const auto parkedAt = [&](double x, double y) {
    for (const auto& record : program->journalAfterCrash())
      EXPECT_EQ(record.parkedOrigin, QuartzPoint(x, y)) << record.title;
    for (const auto& window : {one, two}) EXPECT_EQ(window.frame().origin, QuartzPoint(x, y));
  };
  program->pressEverything();
  parkedAt(1439, 872);
  desktop.screens().plug(2, {1440, 0, 1920, 1080});
  desktop.runUntilQuiet();
  parkedAt(3359, 872);
  desktop.screens().unplug(2);
  // The system brings windows of a display that is gone to another one, and takes its time.
  desktop.run(0.5);
  two.moveTo({900, 300});
  desktop.runUntilQuiet();
  parkedAt(1439, 872);

  // Without a display there is no better place.
  desktop.screens().unplug(1);
  desktop.runUntilQuiet();
  parkedAt(1439, 872);
  desktop.screens().plug(1, {0, 0, 1440, 900});
  desktop.runUntilQuiet();
  EXPECT_EQ(program->tabs().size(), 2);

  // An application that does not answer is asked again.
  desktop.application("Notes").hangs();
  desktop.screens().plug(3, {1440, 0, 800, 600});
  desktop.runUntilQuiet();
  EXPECT_EQ(one.frame().origin, QuartzPoint(1439, 872));
  desktop.application("Notes").wakes();
  desktop.run(6);
  parkedAt(2239, 872);
  // Where windows stay on the displays, it is no use.
  desktop.workspace().keepWindowsOnDisplays(true);
  desktop.screens().unplug(3);
  desktop.runUntilQuiet();
  EXPECT_EQ(one.shareOnDisplays(), 1);
  desktop.workspace().keepWindowsOnDisplays(false);
  desktop.screens().plug(3, {1440, 0, 900, 600});
  desktop.screens().unplug(3);
  desktop.runUntilQuiet();
  parkedAt(1439, 872);

  // One that is restored meanwhile comes back, and one that stays in sight goes home.
  one.answersAfter(0.2);
  two.clampsToDisplay();
  desktop.screens().plug(2, {1440, 0, 1920, 1080});
  desktop.run(0.1);
  program->clickTab("One");
  EXPECT_EQ(one.frame(), QuartzRect(200, 100, 800, 600));
  EXPECT_EQ(two.frame(), QuartzRect(300, 200, 800, 600));
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_TRUE(program->journalAfterCrash().empty());
}

TEST_F(RoadStory, WhoParksAnewGivesWayToWhoBringsBack) {
  // The last one of them is restored, or the program ends, at every moment of it.
  for (const bool ends : {false, true}) {
    for (double moment = 0.01; moment < 1.5; moment += 0.06) {
      simulated::Desktop slow;
      const auto application = slow.launch("Notes", "com.example.notes");
      std::vector<simulated::Window> windows;
      for (const auto* title : {"One", "Two", "Three"})
        windows.push_back(application.openWindow(title, {200, 100, 800, 600}));
      Program own(slow);
      own.pressEverything();
      for (const auto& window : windows) window.answersAfter(0.1);
      slow.screens().plug(2, {1440, 0, 1920, 1080});
      slow.run(moment);
      ends ? own.quit() : own.clickTab("One");
      slow.runUntilQuiet();
      EXPECT_EQ(windows[0].frame(), QuartzRect(200, 100, 800, 600)) << moment;
      EXPECT_EQ(windows[2].frame().minX(), ends ? 200 : 3359) << moment;
    }
  }
}

TEST_F(RoadStory, AWindowOnItsWayFollowsTheDisplays) {
  desktop.screens().plug(2, {-1920, 0, 1920, 1080});
  const auto list = openNotes("Shopping", {-1800, 100, 800, 600}).answersAfter(0.2);
  launch();
  program->pressPellow();
  ASSERT_EQ(program->tabs().size(), 1);
  desktop.pointer().click(program->tab("Shopping"));
  // The move home is on its way.
  desktop.run(0.3);
  desktop.screens().unplug(2);
  desktop.runUntilQuiet();
  EXPECT_EQ(list.shareOnDisplays(), 1);
}

TEST_F(RoadStory, ShortcutsFireWhateverElseIsHeld) {
  openNotes();
  launch();
  constexpr std::uint64_t capsLock = 0x10000;
  constexpr std::uint64_t function = 0x800000;
  desktop.keyboard().press(17, Program::modifiers | modifier::shift);
  desktop.runUntilQuiet();
  EXPECT_TRUE(program->tabs().empty());
  desktop.keyboard().setBelongsToProgram(true);
  desktop.keyboard().press(17, Program::modifiers | capsLock | function);
  desktop.runUntilQuiet();
  EXPECT_EQ(program->tabs().size(), 1);

  // The strip follows the preference at once.
  program->press(3);
  EXPECT_EQ(desktop.panels().panel("pellow-strip").level(), PanelLevel::desktopIcons);
  EXPECT_EQ(desktop.userDefaults().stored("floatAboveWindows"), DefaultsValue(false));
  program->press(3);
  EXPECT_EQ(desktop.panels().panel("pellow-strip").level(), PanelLevel::statusWindow);
}

TEST_F(RoadStory, ItWaitsForThePermission) {
  const auto list = openNotes();
  desktop.accessibility().setTrusted(false);
  launch();
  program->pressPellow();
  EXPECT_EQ(list.frame(), home);
  EXPECT_TRUE(desktop.panels().visible("pellow-strip").empty());
  EXPECT_EQ(desktop.accessibility().prompts(), 1);
  const auto explanation = program->answerAlert("Open System Settings");
  EXPECT_TRUE(explanation.starts_with(
      "Pellow needs Accessibility permission\nPellow controls windows belonging to other apps"));
  EXPECT_EQ(desktop.workspace().openedURLs(),
            std::vector<std::string>{
                "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"});
  desktop.run(10);
  EXPECT_TRUE(desktop.alerts().showing().empty());

  desktop.accessibility().setTrusted(true);
  desktop.run(1.1);
  program->pressPellow();
  EXPECT_EQ(program->tabs().size(), 1);
  desktop.run(5);
  EXPECT_EQ(desktop.panels().visible("pellow-strip").size(), 1);
}

TEST_F(RoadStory, ThePermissionCountsWhileItsAlertStillShows) {
  const auto lost = openNotes("Lost", {1439, 872, 800, 600});
  desktop.userDefaults().put(
      "parkedWindows",
      DefaultsData{R"([{"bundleID":"com.example.notes","title":"Lost","originalOrigin":[100,120],)"
                   R"("parkedOrigin":[1439,872]}])"});
  desktop.accessibility().setTrusted(false);
  launch();
  EXPECT_EQ(desktop.alerts().showing().size(), 1);

  // Quitting now keeps the previous run's journal.
  simulated::Desktop second(desktop.snapshot());
  Program unstarted(second);
  unstarted.perform(ShortcutAction::pellowAll);
  unstarted.perform(ShortcutAction::restoreAll);
  second.runUntilQuiet();
  second.alerts().choose("Later");
  second.runUntilQuiet();
  EXPECT_EQ(unstarted.answerAlert(),
            std::string(failed) + "Pellow needs Accessibility permission to control windows.");
  EXPECT_EQ(second.counterpart(lost).frame().minX(), 1439);
  unstarted.quit();
  second.runUntilQuiet();
  EXPECT_EQ(unstarted.journalAfterCrash().size(), 1);

  // A menu command may come before the next check for the permission.
  simulated::Desktop third(desktop.snapshot());
  Program quick(third);
  third.accessibility().setTrusted(true);
  quick.perform(ShortcutAction::pellowAll);
  third.run(0.5);
  EXPECT_EQ(quick.tabs().size(), 1);
  EXPECT_EQ(quick.journalAfterCrash().at(0).originalOrigin, home.origin);

  desktop.accessibility().setTrusted(true);
  desktop.run(1.1);
  EXPECT_TRUE(desktop.alerts().showing().empty());
  EXPECT_EQ(lost.frame(), home);
  EXPECT_TRUE(program->journalAfterCrash().empty());
  lost.raise();
  program->pressPellow();
  desktop.run(3);
  EXPECT_EQ(program->journalAfterCrash().size(), 1) << "it has begun once";
}

}  // namespace
}  // namespace pellow
