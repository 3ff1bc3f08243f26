#include "tests/desktop/window_managers_test.h"

// Windows that are more than a plain rectangle on the only desktop.

namespace pellow::desktop {
namespace {

using States = std::vector<std::string>;

constexpr auto horizontal = "_NET_WM_STATE_MAXIMIZED_HORZ";
constexpr auto vertical = "_NET_WM_STATE_MAXIMIZED_VERT";
constexpr auto fullScreen = "_NET_WM_STATE_FULLSCREEN";

// A window and how it was before it went away.
struct Guest {
  WindowID window = 0;
  States states;
  PixelRect home;

  bool has(const std::string& state) const {
    return std::ranges::find(states, state) != states.end();
  }
};

class WindowStates : public WindowManagers {
 protected:
  Guest openIn(const States& states) {
    const int offset = 20 * static_cast<int>(guests.size());
    Guest guest{client.open("Guest " + std::to_string(guests.size()),
                            {100 + offset, 90 + offset, 420, 260}),
                states,
                {}};
    // Both at once, as everybody asks for it: some window managers mix up two wishes in a row.
    if (guest.has(horizontal) && guest.has(vertical)) client.maximize(guest.window);
    for (const auto& state : states) {
      const bool isMaximizing = state != fullScreen && guest.has(horizontal) && guest.has(vertical);
      if (!isMaximizing) desktop.changeState(guest.window, state, true);
      EXPECT_TRUE(eventually([&] { return desktop.hasState(guest.window, state); })) << state;
    }
    awaitFinished();
    // A full-screen window may count as maximized, too, or not.
    guest.states = statesOf(guest.window);
    guest.home = desktop.frame(guest.window);
    guests.push_back(guest);
    return guest;
  }

  // When the window manager shows another window, it has finished with those before.
  void awaitFinished() { client.destroy(client.open("Next", {400, 300, 200, 100})); }

  States statesOf(WindowID window) const {
    States states{horizontal, vertical, fullScreen};
    std::erase_if(states, [&](const auto& state) { return !desktop.hasState(window, state); });
    return states;
  }

  void expectGuestBack(const Guest& guest) {
    EXPECT_TRUE(eventually([&] {
      return statesOf(guest.window) == guest.states && desktop.frame(guest.window) == guest.home &&
             desktop.values(guest.window, "_PELLOW_STATE").empty();
    })) << testing::PrintToString(guest.states)
        << testing::PrintToString(statesOf(guest.window)) << desktop.frame(guest.window)
        << " is not " << guest.home << "\n"
        << pellow->process().standardError();
  }

  bool isMinimized(WindowID window) const {
    return desktop.hasState(window, "_NET_WM_STATE_HIDDEN") && !desktop.isShown(window);
  }

  std::uint32_t desktopOf(WindowID window) const {
    return desktop.values(window, "_NET_WM_DESKTOP").at(0);
  }

  std::vector<Guest> guests;
};

TEST_F(WindowStates, AreKeptByEveryWayAwayAndBack) {
  for (const States& states : {States{vertical}, States{horizontal}, States{horizontal, vertical},
                               States{fullScreen}, States{horizontal, vertical, fullScreen}})
    openIn(states);
  for (const std::string mechanism : {"offscreen", "minimize"}) {
    SCOPED_TRACE(mechanism);
    for (const bool byClick : {true, false}) {
      ASSERT_NO_FATAL_FAILURE(launchWith(mechanism));
      for (const auto& guest : guests) ASSERT_NO_FATAL_FAILURE(putAway(guest.window));
      for (const auto& guest : guests)
        EXPECT_TRUE(mechanism == "minimize" ? isMinimized(guest.window) : isAway(guest.window))
            << testing::PrintToString(guest.states);
      if (byClick) {
        for (const auto& guest : guests) {
          // A full-screen window may cover the tabs of those that are still away.
          if (guest.states == States{fullScreen}) break;
          pellow->clickTab(0);
          expectGuestBack(guest);
          EXPECT_TRUE(eventually([&] { return desktop.activeWindow() == guest.window; }));
        }
        pressRestoreAll();
        for (const auto& guest : guests) expectGuestBack(guest);
        expectAllIsOver();
      }
      if (mechanism == "offscreen" && !byClick) {
        pellow->process().kill();
        ASSERT_NO_FATAL_FAILURE(launch());
      }
      end();
      for (const auto& guest : guests) expectGuestBack(guest);
    }
  }
  const auto& covering = guests.back();
  // What was below the full screen is there still.
  desktop.changeState(covering.window, fullScreen, false);
  EXPECT_TRUE(
      eventually([&] { return statesOf(covering.window) == States{horizontal, vertical}; }));
}

TEST_F(WindowStates, WindowsOfOtherDesktopsAreLeftAlone) {
  ASSERT_TRUE(desktop.switchTo(1) && desktop.switchTo(0));
  const auto here = openIn({});
  const auto sticky = openIn({});
  const auto there = openIn({});
  const auto minimized = openIn({});
  desktop.sendToDesktop(sticky.window, DesktopSession::allDesktops);
  desktop.sendToDesktop(there.window, 1);
  ASSERT_TRUE(eventually([&] {
    return desktopOf(sticky.window) == DesktopSession::allDesktops && desktopOf(there.window) == 1;
  }));
  ASSERT_NO_FATAL_FAILURE(launchWith("minimize"));
  ASSERT_NO_FATAL_FAILURE(putAway(minimized.window));
  EXPECT_TRUE(isMinimized(minimized.window));

  // Tabs survive a switch, and what they stand for comes to the desktop that the user is on.
  ASSERT_TRUE(desktop.switchTo(1));
  EXPECT_EQ(pellow->tabCount(), 1);
  ASSERT_NO_FATAL_FAILURE(putAway(there.window));
  pellow->clickTab(0);
  expectGuestBack(minimized);
  EXPECT_TRUE(eventually([&] { return desktopOf(minimized.window) == 1; }));
  EXPECT_TRUE(eventually([&] { return desktop.activeWindow() == minimized.window; }));
  end();
  EXPECT_TRUE(desktop.isShown(there.window));
  EXPECT_EQ(desktopOf(here.window), 0);

  ASSERT_TRUE(desktop.switchTo(0));
  ASSERT_NO_FATAL_FAILURE(launchWith("offscreen"));
  for (const auto& guest : {here, sticky}) ASSERT_NO_FATAL_FAILURE(putAway(guest.window));
  ASSERT_TRUE(desktop.switchTo(1));
  EXPECT_TRUE(isAway(sticky.window));
  EXPECT_EQ(pellow->tabCount(), 2);
  pellow->clickTab(0);
  expectGuestBack(here);
  EXPECT_TRUE(eventually([&] { return desktopOf(here.window) == 1; }));
  EXPECT_TRUE(eventually([&] { return desktop.activeWindow() == here.window; }));
  pellow->clickTab(0);
  expectGuestBack(sticky);
  EXPECT_EQ(desktopOf(sticky.window), DesktopSession::allDesktops);
  expectAllIsOver();
  end();

  // After a crash, they are found on whatever desktop they are.
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putAway(here.window));
  pellow->process().kill();
  ASSERT_TRUE(desktop.switchTo(0));
  ASSERT_NO_FATAL_FAILURE(launch());
  EXPECT_TRUE(pellow->hasLogged("info Recovered 1 window(s) stranded by a previous run"))
      << pellow->process().standardError();
  expectGuestBack(here);
  EXPECT_EQ(desktopOf(here.window), 1);
  expectAllIsOver();
}

}  // namespace
}  // namespace pellow::desktop
