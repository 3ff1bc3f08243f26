#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/program.h"

// Many windows at once, and how their failures are reported.

namespace pellow {
namespace {

using simulated::AXCall;
using Tabs = std::vector<std::string>;

constexpr auto failed = "Pellow could not complete that action\n";

class BulkStory : public Story {
 protected:
  simulated::Application agent =
      desktop.launch("Agent", "com.example.agent", ActivationPolicy::accessory);
  simulated::Application notes = desktop.launch("Notes", "com.example.notes");
  simulated::Application mail = desktop.launch("Mail", "com.example.mail");
  simulated::Application idle = desktop.launch("Idle", "com.example.idle");
  simulated::Window clock = agent.openWindow("Clock", {10, 40, 200, 100});
  simulated::Window list = notes.openWindow("Shopping", {100, 120, 800, 600});
  simulated::Window letter = notes.openWindow("Letter", {300, 200, 400, 300});
  simulated::Window sheet = notes.openWindow("Save", {350, 250, 300, 200}, "AXDialog");
  simulated::Window inbox = mail.openWindow("Inbox", {0, 30, 500, 500});

  Tabs sortedTabs() {
    auto tabs = program->tabs();
    std::ranges::sort(tabs);
    return tabs;
  }

  // Opens windows that refuse to leave the screen.
  std::vector<simulated::Window> openStubborn(int count) {
    const auto stone = desktop.launch("Stone", "com.example.stone");
    std::vector<simulated::Window> windows;
    for (int number = 1; number <= count; ++number)
      windows.push_back(
          stone.openWindow(fmt::format("Rock {}", number), {100, 100, 300, 200}).refusesToMove());
    return windows;
  }

  void expectAllHome() const {
    EXPECT_EQ(list.frame(), QuartzRect(100, 120, 800, 600));
    EXPECT_EQ(letter.frame(), QuartzRect(300, 200, 400, 300));
    EXPECT_EQ(inbox.frame(), QuartzRect(0, 30, 500, 500));
  }
};

TEST_F(BulkStory, AWindowThatLeavesTheDockBeforeItsTurnGoesBackThere) {
  desktop.userDefaults().put("mechanism", "minimize");
  inbox.minimize();
  launch();
  list.answersAfter(0.2);
  letter.answersAfter(0.2);
  desktop.after(0.9, [&] { inbox.chooseFromWindowMenu(); });
  program->pressEverything();
  EXPECT_EQ(sortedTabs(), (Tabs{"Inbox", "Letter", "Shopping"}));
  EXPECT_TRUE(inbox.isMinimized());
  program->pressRestoreAll();
  expectAllHome();
}

TEST_F(BulkStory, EverythingIsEveryStandardWindowOfOrdinaryApplications) {
  launch();
  program->pressEverything();
  EXPECT_EQ(sortedTabs(), (Tabs{"Inbox", "Letter", "Shopping"}));
  EXPECT_EQ(clock.frame(), QuartzRect(10, 40, 200, 100));
  EXPECT_EQ(sheet.frame(), QuartzRect(350, 250, 300, 200));
  EXPECT_EQ(program->journalAfterCrash().size(), 3);

  program->pressEverything();
  EXPECT_EQ(program->tabs().size(), 3) << "once is enough";
  program->pressRestoreAll();
  expectAllHome();
  EXPECT_TRUE(desktop.alerts().showing().empty());

  // A hidden application has one tab, even if something else has shown it in between.
  desktop.userDefaults().put("mechanism", "hideApp");
  program->pressEverything();
  EXPECT_EQ(program->tabs().size(), 2);
  EXPECT_TRUE(notes.isHidden() && mail.isHidden());
  desktop.userDefaults().put("restoreOnActivation", false);
  notes.unhide();
  notes.activate();
  list.raise();
  program->pressPellow();
  EXPECT_TRUE(notes.isHidden());
  EXPECT_EQ(program->tabs().size(), 2);
  for (const auto& window : {letter, sheet}) window.close();  // one of them was the tab's own
  program->pressRestoreAll();
  EXPECT_FALSE(notes.isHidden() || mail.isHidden());
}

// One of its windows has a tab already.
TEST_F(BulkStory, AnApplicationIsHiddenForItsOtherWindows) {
  launch();
  notes.activate();
  for (const auto& first : {list, letter}) {
    SCOPED_TRACE(first.title());
    desktop.userDefaults().put("mechanism", "offscreen");
    first.raise();
    program->pressPellow();
    desktop.userDefaults().put("mechanism", "hideApp");
    program->pressEverything();
    EXPECT_TRUE(notes.isHidden());
    program->pressRestoreAll();
    EXPECT_FALSE(notes.isHidden());
    expectAllHome();
  }
}

TEST_F(BulkStory, PinnedApplicationsGoToTheirZones) {
  launch();
  program->pressPinned();
  EXPECT_EQ(program->answerAlert(),
            std::string(failed) +
                "No apps are pinned yet. Right-click a tab and choose \"Always Pellow <app> Here\" "
                "to pin one.");
  expectAllHome();

  simulated::Desktop desk(desktop.snapshot());
  desk.userDefaults().put("zones", DefaultsData{R"([{"id":"A0000000-0000-0000-0000-000000000000",
      "name":"A","position":[1,0.5],"showsName":false,"snap":"right"},
      {"id":"B0000000-0000-0000-0000-000000000000","name":"B","position":[0,0.5],
      "showsName":false,"snap":"left"}])"});
  desk.userDefaults().put(
      "pinnedApps", DefaultsData{R"({"com.example.notes":"B0000000-0000-0000-0000-000000000000",
      "com.example.web":"C0000000-0000-0000-0000-000000000000",
      "com.example.absent":"A0000000-0000-0000-0000-000000000000"})"});
  // Pinned to a zone that is gone.
  desk.launch("Web", "com.example.web").openWindow("Page", {50, 60, 700, 500});
  Program pinned(desk);
  pinned.pressPinned();
  const auto& tabs = pinned.controller().store().tabs();
  ASSERT_EQ(tabs.size(), 3);
  for (const auto& tab : tabs)
    EXPECT_EQ(tab.zoneID->text().front(), tab.appName == "Notes" ? 'B' : 'A') << tab.title;
  EXPECT_EQ(desk.counterpart(list).frame().minX(), 1 - 800);
  EXPECT_EQ(desk.counterpart(inbox).frame(), inbox.frame());
}

TEST_F(BulkStory, FocusModeLeavesExactlyTheFocusedWindow) {
  for (const auto* mechanism : {"offscreen", "minimize", "hideApp"}) {
    SCOPED_TRACE(mechanism);
    desktop.userDefaults().put("mechanism", mechanism);
    if (!program) launch();
    notes.activate();
    letter.raise();
    program->pressFocusMode();
    for (const auto& window : {list, inbox}) EXPECT_LE(window.shareOnDisplays(), 0.05);
    EXPECT_TRUE(letter.isVisible());
    EXPECT_EQ(letter.frame(), QuartzRect(300, 200, 400, 300));
    EXPECT_EQ(sortedTabs(), (Tabs{"Inbox", "Shopping"}));
    program->pressRestoreAll();
    expectAllHome();
  }

  // The window focused at the key press stays, even if another command is under way.
  desktop.userDefaults().put("mechanism", "minimize");
  inbox.answersAfter(1);
  notes.activate();
  letter.raise();
  desktop.keyboard().press(14, Program::modifiers);
  desktop.keyboard().press(14, Program::modifiers);
  desktop.run(0.5);
  mail.activate();
  desktop.runUntilQuiet();
  EXPECT_TRUE(letter.isVisible());
  inbox.behaves();
  program->pressRestoreAll();

  for (const auto& window : {list, letter, sheet, inbox, clock}) window.close();
  program->pressFocusMode();
  EXPECT_EQ(program->answerAlert(), std::string(failed) + "No focused window to pellow.");
}

TEST_F(BulkStory, FailuresAreToldTogetherAtTheEnd) {
  desktop.userDefaults().put("mechanism", "minimize");
  launch();
  for (const auto& window : {list, letter, inbox})
    window.failsNext("AXMinimized", AXError::cannotComplete, AXCall::write);
  desktop.launch("Web").openWindow("Page", {50, 60, 700, 500});
  program->pressEverything();
  EXPECT_EQ(program->tabs(), Tabs{"Page"}) << "one failure does not stop the others";
  EXPECT_EQ(desktop.alerts().showing().size(), 1);
  EXPECT_EQ(program->answerAlert(),
            std::string(failed) +
                "Could not minimize the window (the app did not respond in time).\n\nAnd 2 more.");
  EXPECT_TRUE(program->controller().isIdle());
  EXPECT_EQ(std::ranges::count_if(
                desktop.logged(),
                [](const auto& line) { return line.message.starts_with("Could not minimize"); }),
            3);
}

TEST_F(BulkStory, WindowsThatWillNotSlideMayBeMinimizedInstead) {
  const auto rocks = openStubborn(6);
  launch();
  const auto refusal = std::string("Stone will not let its window be moved off-screen.");
  const auto ending = std::string(
      "\n\nThey can be minimized to their tabs instead, which puts them away but leaves them in "
      "the Dock.");

  program->pressEverything();
  EXPECT_EQ(program->answerAlert("Leave Them"), "6 windows would not slide off-screen\n" + refusal +
                                                    "\n" + refusal + "\n" + refusal + "\n" +
                                                    refusal + "\nAnd 2 more." + ending);
  EXPECT_EQ(program->tabs().size(), 3);
  for (const auto& rock : rocks) EXPECT_EQ(rock.frame(), QuartzRect(100, 100, 300, 200));

  // Other failures join the same list; a window that got its tab meanwhile is left alone.
  for (int number = 1; number < 6; ++number) rocks[number].close();
  program->pressRestoreAll();
  inbox.failsNext("AXPosition", AXError::failure, AXCall::write);
  program->pressEverything();
  ASSERT_EQ(desktop.alerts().showing().size(), 1);
  EXPECT_EQ(desktop.alerts().showing()[0].buttons,
            (std::vector<std::string>{"Minimize Them", "Leave Them"}));
  EXPECT_EQ(
      program->answerAlert("Minimize Them"),
      "One window would not slide off-screen\nCould not move the window (AXError failure).\n" +
          refusal + ending);
  EXPECT_TRUE(rocks[0].isMinimized());
  EXPECT_EQ(sortedTabs(), (Tabs{"Letter", "Rock 1", "Shopping"}));

  // Outside a bulk action it is an ordinary failure.
  program->pressRestoreAll();
  rocks[0].raise();
  desktop.application("Stone").activate();
  program->pressPellow();
  EXPECT_EQ(program->answerAlert(), failed + refusal);
}

TEST_F(BulkStory, OneBulkActionAtATime) {
  desktop.userDefaults().put("animateFlight", false);
  openStubborn(1);
  launch();
  notes.answersAfter(0.1);
  mail.answersAfter(0.1);
  notes.activate();
  letter.raise();
  desktop.keyboard().press(14, Program::modifiers);
  desktop.run(0.5);
  desktop.keyboard().press(0, Program::modifiers);
  desktop.keyboard().press(17, Program::modifiers);
  desktop.runUntilQuiet();
  // Each action reports its own refusals, one alert after the other.
  EXPECT_EQ(desktop.alerts().showing().size(), 1);
  EXPECT_NE(program->answerAlert("Leave Them"), "");
  EXPECT_NE(program->answerAlert("Leave Them"), "");
  EXPECT_EQ(program->answerAlert(), "");
  EXPECT_EQ(sortedTabs(), (Tabs{"Inbox", "Letter", "Shopping"}));
  EXPECT_TRUE(program->controller().isIdle());
  program->pressRestoreAll();
  expectAllHome();
}

// At every moment of a bulk action and of restoring everything.
TEST_F(BulkStory, ASignalInTheMiddleBringsEverythingHome) {
  for (const auto* mechanism : {"offscreen", "minimize", "hideApp"}) {
    for (int moment = 0; moment < 40; ++moment) {
      SCOPED_TRACE(fmt::format("{}, {}", mechanism, moment));
      simulated::Desktop desk({.seed = static_cast<std::uint64_t>(moment + 1)});
      desk.userDefaults().put("mechanism", mechanism);
      std::vector<simulated::Window> windows;
      for (const auto* name : {"One", "Two"}) {
        const auto application = desk.launch(name, name);
        for (const double x : {10., 200.})
          windows.push_back(application.openWindow("Same title", {x, 100, 500, 400}));
      }
      Program running(desk);
      desk.accessibility().delayAnswers(0.05);
      desk.keyboard().press(0, Program::modifiers);
      desk.run(0.03 * (moment % 20));
      if (moment >= 20) desk.keyboard().press(15, Program::modifiers);
      desk.after(0.02 * (moment % 20),
                 [&] { desk.process().receive(TerminationSignal::terminate); });
      desk.runUntilQuiet();
      EXPECT_EQ(desk.process().exitStatus(), 0);
      for (const auto& window : windows) {
        EXPECT_TRUE(window.isVisible());
        EXPECT_EQ(window.frame().minY(), 100);
      }
      EXPECT_TRUE(running.journalAfterCrash().empty());
    }
  }
}

}  // namespace
}  // namespace pellow
