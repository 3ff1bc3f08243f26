#include "tests/harness/everyday.h"

// An application that hangs, and a window manager that does: the program stays alive for all
// others, and nothing is lost.

namespace pellow::desktop {
namespace {

class Hang : public Everyday {
 protected:
  void expectRoundTrip(const Guest& guest) {
    const int tabs = pellow->tabCount();
    ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
    pellow->clickTab(tabs);
    expectHome({guest});
    EXPECT_TRUE(hasTabs(tabs));
  }

  TestClient sleeper{desktop, "Sleeper"};
  TestClient client{desktop, "Awake"};
};

// Windows belong to the server and the window manager: those of a stopped application go and come
// like all others.
TEST_F(Hang, AnApplicationThatHangsHoldsNobodyUp) {
  const auto letter = open(sleeper, "Letter", {100, 120, 400, 300});
  const auto list = open(sleeper, "List", {150, 170, 400, 300});
  const auto note = open(client, "Note", {600, 300, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  sleeper.process().send(SIGSTOP);
  ASSERT_NO_FATAL_FAILURE(putOffScreen(letter));
  expectRoundTrip(note);
  press('a');
  expectAway({letter, list, note});
  EXPECT_TRUE(hasTabs(3));
  EXPECT_TRUE(desktop.answersPing(pellow->strip()));
  pellow->clickTab(2);
  ASSERT_TRUE(hasTabs(2));
  pellow->clickTab(0);
  expectHome({letter});
  press('r');
  expectHome({letter, list, note});
  expectAllIsOver();

  press('a');
  ASSERT_TRUE(hasTabs(3));
  sleeper.process().send(SIGCONT);
  sleeper.setTitle(list.window, "List, at last");
  press('r');
  expectHome({letter, list, note});
  expectAllIsOver();
}

// Windows can be moved past a window manager that hangs, but their tabs do not show: the strip is a
// window, too. When it wakes, it does what it was asked meanwhile.
TEST_F(Hang, AWindowManagerThatHangsDelaysAndLosesNothing) {
  const auto letter = open(sleeper, "Letter", {100, 120, 400, 300});
  const auto note = open(client, "Note", {600, 300, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  desktop.windowManager().send(SIGSTOP);
  press('a');
  EXPECT_TRUE(eventually([&] { return pellow->journal().size() == 2; }));
  expectAway({letter, note});
  EXPECT_TRUE(desktop.answersPing(pellow->strip()));
  desktop.windowManager().send(SIGCONT);
  EXPECT_TRUE(hasTabs(2));
  // When it shows another window, it has done what it was asked before.
  client.destroy(client.open("Next", {200, 500, 200, 100}));
  expectAway({letter, note});
  press('r');
  expectHome({letter, note});
  expectAllIsOver();

  desktop.windowManager().send(SIGSTOP);
  press('a');
  EXPECT_TRUE(eventually([&] { return pellow->journal().size() == 2; }));
  end();
  desktop.windowManager().send(SIGCONT);
  expectHome({letter, note});
}

// Pellow is killed before the window has gone.
TEST_F(Hang, WhatADeadOneAskedForHappensBeforeTheNextOneLooks) {
  const auto letter = open(client, "Letter", {100, 120, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_TRUE(desktop.activate(letter.window));
  desktop.windowManager().send(SIGSTOP);
  press('t');
  ASSERT_TRUE(eventually([&] { return pellow->journal().size() == 1; }));
  pellow->process().kill();
  pellow = std::make_unique<PellowProgram>(desktop);
  // Gives the new one time to look too early.
  (void)eventually([&] { return pellow->journal().empty(); }, std::chrono::seconds(1));
  desktop.windowManager().send(SIGCONT);
  ASSERT_TRUE(pellow->isReady()) << story(letter);
  expectHome({letter});
  expectAllIsOver();
}

// It leaves that state as asked, but only after Pellow has stopped waiting.
TEST_F(Hang, AMaximizedWindowThatCannotGoStaysAsItIs) {
  const auto window = client.open("Large", {200, 200, 400, 250});
  client.maximize(window);
  const auto isMaximized = [&] {
    return desktop.hasState(window, "_NET_WM_STATE_MAXIMIZED_HORZ") &&
           desktop.hasState(window, "_NET_WM_STATE_MAXIMIZED_VERT") &&
           desktop.frame(window).width == desktop.screen().width;
  };
  ASSERT_TRUE(eventually(isMaximized));
  const auto large = guestOf(window);
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_TRUE(desktop.activate(window));
  desktop.windowManager().send(SIGSTOP);
  press('t');
  ASSERT_TRUE(eventually([&] {
    return pellow->hasLogged("error Could not move the window (the app did not respond in time).");
  })) << story(large);
  desktop.windowManager().send(SIGCONT);
  awaitAlert();
  answerAlert();
  EXPECT_TRUE(eventually(isMaximized));
  expectHome({large});
  EXPECT_TRUE(desktop.values(window, "_PELLOW_STATE").empty());
}

}  // namespace
}  // namespace pellow::desktop
