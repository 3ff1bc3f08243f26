#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/unit/program.h"

// What the program does by itself when windows are minimized, focused and activated elsewhere.

namespace pellow {
namespace {

using simulated::AXCall;
using Tabs = std::vector<std::string>;

constexpr QuartzRect home{100, 120, 800, 600};
constexpr Seconds settled = 2.1;

class TriggersStory : public Story {
 protected:
  simulated::Application notes = desktop.launch("Notes", "com.example.notes");
  simulated::Application mail = desktop.launch("Mail", "com.example.mail");
  simulated::Window list = notes.openWindow("Shopping", home);
  simulated::Window inbox = mail.openWindow("Inbox", {0, 30, 500, 500});

  void pellow(const simulated::Window& window) {
    window.raise();
    desktop.application(window == inbox ? "Mail" : "Notes").activate();
    program->pressPellow();
    ASSERT_TRUE(program->controller().store().contains({window.element(), window.pid()}));
  }

  // Makes it happen long enough after the program's own actions not to count as their echo.
  void later(const std::function<void()>& happens) {
    desktop.run(settled);
    happens();
    desktop.runUntilQuiet();
  }
};

TEST_F(TriggersStory, AMinimizedWindowBecomesATab) {
  for (const auto* mechanism : {"offscreen", "minimize", "hideApp"}) {
    SCOPED_TRACE(mechanism);
    desktop.userDefaults().put("mechanism", mechanism);
    if (!program) launch();
    later([&] { list.minimize(); });
    EXPECT_EQ(program->tabs(), Tabs{"Shopping"});
    EXPECT_TRUE(desktop.hasLogged("Window minimized elsewhere; pellowing it"));
    program->clickTab("Shopping");
    EXPECT_EQ(list.frame(), home);
    EXPECT_TRUE(list.isVisible()) << "also out of the Dock";
    EXPECT_TRUE(list.hasFocus());
  }

  // Neither its own minimizing nor a window that already has a tab makes another one.
  desktop.userDefaults().put("mechanism", "minimize");
  pellow(list);
  later([&] { list.unminimize(); });
  later([&] { list.minimize(); });
  EXPECT_EQ(program->tabs(), Tabs{"Shopping"});
  program->clickTab("Shopping");

  desktop.userDefaults().put("pellowOnMinimize", false);
  later([&] { list.minimize(); });
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_TRUE(list.isMinimized());
}

TEST_F(TriggersStory, AnEchoIsKnownForTwoSeconds) {
  desktop.userDefaults().put("mechanism", "minimize");
  launch();
  mail.activate();
  inbox.answersAfter(1);
  desktop.keyboard().press(17, Program::modifiers);
  // Reading takes one second; the write of "AXMinimized" is under way during the next.
  desktop.run(1.5);
  list.minimize();
  desktop.run(2);
  EXPECT_EQ(program->tabs(), Tabs{"Inbox"}) << "the other was taken for an echo";
  list.unminimize();
  list.minimize();
  desktop.runUntilQuiet();
  EXPECT_EQ(program->tabs(), (Tabs{"Inbox", "Shopping"}));
}

TEST_F(TriggersStory, ApplicationsAreFollowedAsTheyComeAndGo) {
  const auto deaf = desktop.launch("Deaf", "com.example.deaf").refusesObservers();
  const auto agent = desktop.launch("Agent", "com.example.agent", ActivationPolicy::accessory);
  launch();
  const auto unheard = deaf.openWindow("Unheard", home);
  const auto secret = agent.openWindow("Private", home);
  later([&] { unheard.minimize(); });
  later([&] { secret.minimize(); });
  EXPECT_TRUE(program->tabs().empty());

  // The first was not ready yet, and the other was not yet an ordinary application.
  deaf.refusesObservers(false);
  notes.activate();
  later([&] { unheard.chooseFromWindowMenu(); });
  later([&] { unheard.minimize(); });
  EXPECT_EQ(program->tabs(), Tabs{"Unheard"});
  deaf.quit();
  later([&] { agent.becomes(ActivationPolicy::regular); });
  later([&] { secret.unminimize(); });
  later([&] { secret.minimize(); });
  EXPECT_EQ(program->tabs(), Tabs{"Private"});
  agent.quit();

  const auto page = desktop.launch("Web", "com.example.web").openWindow("Page", home);
  later([&] { page.minimize(); });
  EXPECT_EQ(program->tabs(), Tabs{"Page"});
  desktop.application("Web").quit();
  desktop.runUntilQuiet();
  EXPECT_TRUE(program->tabs().empty());
}

TEST_F(TriggersStory, AnApplicationWithNothingToShowGetsItsLatestWindow) {
  const auto letter = notes.openWindow("Letter", {300, 200, 400, 300});
  launch();
  pellow(list);
  pellow(letter);
  mail.activate();

  // For 2 s after a pellow, activating its application restores nothing.
  desktop.run(1);
  notes.activate();
  desktop.runUntilQuiet();
  EXPECT_EQ(program->tabs(), (Tabs{"Shopping", "Letter"}));
  mail.activate();

  later([&] { notes.activate(); });
  EXPECT_EQ(program->tabs(), Tabs{"Shopping"});
  EXPECT_EQ(letter.frame(), QuartzRect(300, 200, 400, 300));
  EXPECT_TRUE(
      desktop.hasLogged("Activated app has nothing visible; restoring its most recent tab"));

  // Now it has something to show, until that is minimized.
  mail.activate();
  later([&] { notes.activate(); });
  EXPECT_EQ(program->tabs(), Tabs{"Shopping"});
  desktop.userDefaults().put("pellowOnMinimize", false);
  letter.minimize();
  mail.activate();
  later([&] { notes.activate(); });
  EXPECT_TRUE(program->tabs().empty());

  pellow(list);
  mail.activate();
  desktop.userDefaults().put("restoreOnActivation", false);
  later([&] { notes.activate(); });
  EXPECT_EQ(program->tabs(), Tabs{"Shopping"});
}

TEST_F(TriggersStory, AWindowChosenFromItsApplicationComesBack) {
  const auto letter = notes.openWindow("Letter", {300, 200, 400, 300});
  launch();
  pellow(list);
  notes.activate();
  letter.raise();
  later([&] { list.raise(); });
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_EQ(list.frame(), home);
  EXPECT_TRUE(desktop.hasLogged("Pellowed window was chosen from its app; restoring it"));

  // With nothing else to see, the rule for activations decides.
  letter.close();
  pellow(list);
  const auto scrap = notes.openWindow("Scrap", {9000, 9000, 300, 300});
  later([&] { list.raise(); });
  EXPECT_EQ(program->tabs(), Tabs{"Shopping"}) << "nothing else of Notes can be seen";
  scrap.moveTo({200, 200});
  scrap.raise();
  later([&] { list.raise(); });
  EXPECT_TRUE(program->tabs().empty());
}

// Activations restore nothing else while windows come back and half a second longer, but for at
// most 1.5 s plus a clamped flight duration per window.
TEST_F(TriggersStory, ABatchIsNotDisturbedByItsOwnActivations) {
  struct Case {
    double animationDuration;
    Seconds suppressed;
  };
  for (const auto& [animationDuration, suppressed] :
       {Case{0.3, 2.4}, Case{5, 1.2 * 3 + 1.5}, Case{0, 0.1 * 3 + 1.5}}) {
    for (const bool tooEarly : {true, false}) {
      SCOPED_TRACE(fmt::format("{} s, {}", animationDuration, tooEarly ? "early" : "late"));
      simulated::Desktop desk;
      desk.userDefaults().put("animationDuration", animationDuration);
      desk.userDefaults().put("tabScope", "app");
      const auto slow = desk.launch("Slow", "com.example.slow");
      for (const auto* title : {"One", "Two", "Three"}) slow.openWindow(title, home);
      Program running(desk);
      running.pressEverything();
      const auto other = desk.launch("Other", "com.example.other");
      other.openWindow("Alone", home);
      running.pressPellow();
      desk.launch("Third").openWindow("Front", home);
      desk.run(settled);

      slow.answersAfter(2);
      const auto& strip = desk.panels().panel("pellow-strip");
      desk.pointer().click(strip.centre("tabs/" + strip.view("tabs")->children.front()->key));
      desk.run(tooEarly ? suppressed - 0.1 : suppressed + 0.1);
      other.activate();
      desk.runUntilQuiet();
      const auto& left = running.controller().store().tabs();
      EXPECT_EQ(left.size(), tooEarly ? 1 : 0);
    }
  }
}

TEST_F(TriggersStory, HalfASecondAfterABatchActivationsCountAgain) {
  for (const auto wait : {0.4, 0.6}) {
    simulated::Desktop desk;
    desk.userDefaults().put("animateFlight", false);
    const auto one = desk.launch("One", "com.example.one");
    const auto two = desk.launch("Two", "com.example.two");
    one.openWindow("First", home);
    two.openWindow("Second", home);
    Program running(desk);
    running.pressEverything();
    desk.launch("Third").openWindow("Front", home);
    desk.run(settled);
    running.clickTab("First");
    // All is done in no time, but `clickTab` waits until nothing is pending.
    desk.run(wait);
    two.activate();
    desk.runUntilQuiet();
    EXPECT_EQ(running.tabs().size(), wait < 0.5 ? 1 : 0) << wait;
  }
}

// The application obeys only after the program has stopped waiting.
TEST_F(TriggersStory, AWindowMinimizedTooLateGetsItsTabAllTheSame) {
  desktop.userDefaults().put("mechanism", "minimize");
  desktop.userDefaults().put("pellowOnMinimize", false);
  launch();
  mail.activate();
  // Reads are answered in time, the write is not: it has 5 s.
  desktop.onPortCall([&](std::uint64_t) {
    const auto& underWay = program->controller().ledger().entries();
    if (!underWay.empty() && underWay.front().tab) inbox.answersAfter(8).actsLate();
  });
  desktop.keyboard().press(17, Program::modifiers);
  desktop.run(6);
  desktop.onPortCall(nullptr);
  EXPECT_EQ(program->answerAlert(),
            "Pellow could not complete that action\n"
            "Could not minimize the window (the app did not respond in time).");
  desktop.runUntilQuiet();
  EXPECT_TRUE(inbox.isMinimized());
  EXPECT_EQ(program->tabs(), Tabs{"Inbox"});
  inbox.behaves();
  program->clickTab("Inbox");
  EXPECT_FALSE(inbox.isMinimized());

  // A window that never minimized is no longer awaited once it has been put away another way.
  inbox.failsNext("AXMinimized", AXError::cannotComplete, AXCall::write);
  mail.activate();
  program->pressPellow();
  EXPECT_FALSE(program->answerAlert().empty());
  desktop.userDefaults().put("mechanism", "offscreen");
  pellow(inbox);
  program->pressRestoreAll();
  later([&] { inbox.minimize(); });
  EXPECT_TRUE(program->tabs().empty());
}

// Whenever the application becomes active while its last window is on the way.
TEST_F(TriggersStory, NothingComesBackWhileEverythingGoes) {
  for (int moment = 1; moment <= 15; ++moment) {
    SCOPED_TRACE(moment);
    simulated::Desktop desk;
    const auto one = desk.launch("One", "com.example.one");
    const auto old = one.openWindow("Old", home);
    const auto late = one.openWindow("Late", {300, 120, 400, 300});
    const auto two = desk.launch("Two", "com.example.two");
    const auto other = two.openWindow("Other", {500, 220, 400, 300});
    Program running(desk);
    one.activate();
    old.raise();
    running.pressPellow();
    two.activate();
    desk.run(settled);
    late.answersAfter(0.2);
    other.answersAfter(0.2);
    desk.keyboard().press(0, Program::modifiers);
    desk.run(0.1 * moment);
    one.activate();
    desk.runUntilQuiet();
    EXPECT_EQ(running.tabs(), (Tabs{"Old", "Late", "Other"}));
  }
}

TEST_F(TriggersStory, AnAlertDoesNotKeepTabsFromComingBack) {
  launch();
  pellow(list);
  mail.activate();
  desktop.run(settled);
  inbox.refusesToMove();
  program->pressPellow();
  ASSERT_EQ(desktop.alerts().showing().size(), 1);
  later([&] { notes.activate(); });
  EXPECT_TRUE(program->tabs().empty()) << "while the alert shows";
  EXPECT_EQ(list.frame(), home);

  // Closing the alert reactivates the previous application, which nobody has chosen.
  pellow(list);
  desktop.run(settled);
  EXPECT_NE(program->answerAlert(), "");
  EXPECT_EQ(program->tabs(), Tabs{"Shopping"});
}

}  // namespace
}  // namespace pellow
