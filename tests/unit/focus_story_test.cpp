#include <algorithm>
#include <string>
#include <vector>

#include "tests/unit/program.h"

// Who has the keyboard once a window has gone beyond the displays.

namespace pellow {
namespace {

class FocusStory : public Story {
 protected:
  FocusStory() { desktop.userDefaults().set("pellowMechanism", std::string("offscreen")).value(); }

  std::string focused() {
    const auto window = desktop.state().focusedWindow();
    return window ? desktop.state().window(*window)->title : "";
  }

  simulated::Application notes = desktop.launch("Notes");
  simulated::Application mail = desktop.launch("Mail");
};

TEST_F(FocusStory, EveryPressPutsTheNextWindowAwayDownToTheDesktop) {
  notes.openWindow("First", {100, 120, 500, 400});
  mail.openWindow("Second", {150, 150, 500, 400});
  notes.openWindow("Third", {200, 180, 500, 400});
  notes.openWindow("Minimized", {200, 180, 500, 400}).minimize();
  mail.openWindow("Fourth", {250, 210, 500, 400});
  launch();
  for (const auto* next : {"Third", "Second", "First", ""}) {
    program->pressPellow();
    EXPECT_EQ(focused(), next);
  }
  EXPECT_EQ(program->tabs(), (std::vector<std::string>{"Fourth", "Third", "Second", "First"}));
  EXPECT_FALSE(desktop.workspace().frontmostApplication());
  program->pressPellow();
  EXPECT_EQ(program->answerAlert(),
            "Pellow could not complete that action\nNo focused window to pellow.");
}

TEST_F(FocusStory, PressesInARowEachMeanTheWindowOfTheirTime) {
  for (const auto* title : {"First", "Second", "Third", "Fourth", "Fifth"})
    notes.openWindow(title, {100, 120, 500, 400}).answersAfter(0.05);
  launch();
  for (int press = 0; press < 4; ++press) desktop.keyboard().press(17, Program::modifiers);
  desktop.runUntilQuiet();
  EXPECT_EQ(program->tabs(), (std::vector<std::string>{"Fifth", "Fourth", "Third", "Second"}));
  EXPECT_EQ(focused(), "First");

  // One that stays is not asked a second time for the presses that came meanwhile.
  desktop.window("First").refusesToMove();
  for (int press = 0; press < 3; ++press) desktop.keyboard().press(17, Program::modifiers);
  desktop.runUntilQuiet();
  EXPECT_EQ(desktop.alerts().showing().size(), 1u);
}

// On its way to the next window the keyboard may be nowhere.
TEST_F(FocusStory, APressMeanwhileWaitsForTheNextWindow) {
  notes.openWindow("First", {100, 120, 500, 400}).answersAfter(0.05);
  mail.openWindow("Second", {150, 150, 500, 400});
  launch();
  desktop.keyboard().press(17, Program::modifiers);
  while (program->tabs().empty()) desktop.run(0.01);
  desktop.workspace().activateDesktop();
  desktop.keyboard().press(17, Program::modifiers);
  desktop.runUntilQuiet();
  EXPECT_TRUE(desktop.alerts().showing().empty());
}

TEST_F(FocusStory, FocusStaysWhereTheUserTookIt) {
  const auto first = notes.openWindow("First", {100, 120, 500, 400});
  const auto second = mail.openWindow("Second", {150, 150, 500, 400});
  notes.openWindow("Third", {200, 180, 500, 400});
  launch();
  // The window that would be next answers slowly; the user is quicker.
  second.answersAfter(0.3);
  desktop.keyboard().press(17, Program::modifiers);
  desktop.run(0.2);
  desktop.launch("Terminal").openWindow("Shell", {400, 300, 300, 200});
  desktop.runUntilQuiet();
  EXPECT_EQ(focused(), "Shell");
  program->controller().pellow({first.element(), first.pid()}, std::nullopt, std::nullopt);
  desktop.runUntilQuiet();
  EXPECT_EQ(focused(), "Shell") << "a window without the keyboard leaves nothing to hand on";
}

TEST_F(FocusStory, HandingTheFocusOnBringsNothingBack) {
  desktop.delayAnnouncements(0.3);
  for (const auto* title : {"One", "Two"}) {
    notes.openWindow(title, {100, 120, 500, 400});
    mail.openWindow(std::string("Another ") + title, {150, 150, 500, 400});
  }
  launch();
  for (int press = 0; press < 4; ++press) program->pressPellow();
  EXPECT_EQ(program->tabs().size(), 4u);
  program->pressRestoreAll();
  EXPECT_TRUE(program->tabs().empty());
  program->pressEverything();
  EXPECT_EQ(program->tabs().size(), 4u);
  EXPECT_EQ(focused(), "");
}

TEST_F(FocusStory, WhereWindowsCannotLeaveTheyAreMinimized) {
  const auto first = notes.openWindow("First", {100, 120, 500, 400});
  const auto second = mail.openWindow("Second", {150, 150, 500, 400});
  desktop.workspace().keepWindowsOnDisplays();
  launch();
  program->pressPellow();
  EXPECT_TRUE(second.isMinimized());
  program->pressEverything();
  EXPECT_TRUE(first.isMinimized());
  EXPECT_TRUE(desktop.alerts().showing().empty());
  const auto told = std::ranges::count(
      desktop.logged(), "This desktop keeps windows on its displays; they are minimized instead",
      &simulated::LogLine::message);
  EXPECT_EQ(told, 1);
  program->clickTab("Second");
  EXPECT_TRUE(second.isInFront());
  EXPECT_FALSE(second.isMinimized());

  desktop.workspace().keepWindowsOnDisplays(false);
  program->pressPellow();
  EXPECT_FALSE(second.isVisible() && second.shareOnDisplays() > 0.05);
  EXPECT_FALSE(second.isMinimized());
}

}  // namespace
}  // namespace pellow
