#include "tests/desktop/window_managers_test.h"

// Windows that are more than a plain rectangle on the only desktop.

namespace pellow::desktop {
namespace {

using States = std::vector<std::string>;

constexpr auto horizontal = "_NET_WM_STATE_MAXIMIZED_HORZ";
constexpr auto vertical = "_NET_WM_STATE_MAXIMIZED_VERT";
constexpr auto fullScreen = "_NET_WM_STATE_FULLSCREEN";

class WindowStates : public WindowManagers {
 protected:
  // A window and how it was before it went away.
  struct Guest : Everyday::Guest {
    States states;

    bool has(const std::string& state) const {
      return std::ranges::find(states, state) != states.end();
    }
  };

  Guest openIn(const States& states) {
    const int offset = 20 * static_cast<int>(guests.size());
    const auto window = client.open("Guest " + std::to_string(guests.size()),
                                    {100 + offset, 90 + offset, 420, 260});
    const Guest wanted{{}, states};
    // Both at once, as applications do: some window managers mix up two requests in a row.
    const bool isMaximized = wanted.has(horizontal) && wanted.has(vertical);
    if (isMaximized) client.maximize(window);
    for (const auto& state : states) {
      if (state == fullScreen || !isMaximized) desktop.changeState(window, state, true);
      EXPECT_TRUE(eventually([&] { return desktop.hasState(window, state); })) << state;
    }
    awaitFinished();
    // A full-screen window may count as maximized, too, or not.
    return guests.emplace_back(Guest{guestOf(window), statesOf(window)});
  }

  States statesOf(WindowID window) const {
    States states{horizontal, vertical, fullScreen};
    std::erase_if(states, [&](const auto& state) { return !desktop.hasState(window, state); });
    return states;
  }

  // On whatever desktop it is.
  void expectGuestBack(const Guest& guest) {
    EXPECT_TRUE(eventually([&] {
      return statesOf(guest.window) == guest.states && desktop.frame(guest.window) == guest.home &&
             !isMinimized(guest) && desktop.values(guest.window, "_PELLOW_STATE").empty();
    })) << testing::PrintToString(guest.states)
        << testing::PrintToString(statesOf(guest.window)) << story(guest);
  }

  std::uint32_t desktopOf(const Guest& guest) const {
    return desktop.values(guest.window, "_NET_WM_DESKTOP").at(0);
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
      ASSERT_NO_FATAL_FAILURE(launch({{"mechanism", mechanism}}));
      for (const auto& guest : guests) ASSERT_NO_FATAL_FAILURE(putAway(guest));
      for (const auto& guest : guests)
        EXPECT_TRUE(mechanism == "minimize" ? isMinimized(guest) : isAway(guest))
            << testing::PrintToString(guest.states);
      if (byClick) {
        int left = pellow->tabCount();
        for (const auto& guest : guests) {
          // A full-screen window may cover the tabs of those that are still away.
          if (guest.states == States{fullScreen}) break;
          pellow->clickTab(0);
          expectGuestBack(guest);
          EXPECT_TRUE(becomesActive(guest));
          ASSERT_TRUE(hasTabs(--left));
        }
        press('r');
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
  // The state beneath full screen is still there.
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
  ASSERT_TRUE(eventually(
      [&] { return desktopOf(sticky) == DesktopSession::allDesktops && desktopOf(there) == 1; }));
  ASSERT_NO_FATAL_FAILURE(launch({{"mechanism", "minimize"}}));
  ASSERT_NO_FATAL_FAILURE(putAway(minimized));
  EXPECT_TRUE(isMinimized(minimized));

  // Tabs survive a switch, and their windows come back to the current desktop.
  ASSERT_TRUE(desktop.switchTo(1));
  EXPECT_EQ(pellow->tabCount(), 1);
  ASSERT_NO_FATAL_FAILURE(putAway(there));
  pellow->clickTab(0);
  expectGuestBack(minimized);
  EXPECT_TRUE(eventually([&] { return desktopOf(minimized) == 1; }));
  EXPECT_TRUE(becomesActive(minimized));
  end();
  EXPECT_TRUE(desktop.isShown(there.window));
  EXPECT_EQ(desktopOf(here), 0);

  ASSERT_TRUE(desktop.switchTo(0));
  ASSERT_NO_FATAL_FAILURE(launch({{"mechanism", "offscreen"}}));
  for (const auto& guest : {here, sticky}) ASSERT_NO_FATAL_FAILURE(putAway(guest));
  ASSERT_TRUE(desktop.switchTo(1));
  EXPECT_TRUE(isAway(sticky));
  EXPECT_EQ(pellow->tabCount(), 2);
  pellow->clickTab(0);
  expectGuestBack(here);
  EXPECT_TRUE(eventually([&] { return desktopOf(here) == 1; }));
  EXPECT_TRUE(becomesActive(here));
  ASSERT_TRUE(hasTabs(1));
  pellow->clickTab(0);
  expectGuestBack(sticky);
  EXPECT_EQ(desktopOf(sticky), DesktopSession::allDesktops);
  expectAllIsOver();
  end();

  // After a crash, windows are found on any desktop.
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putAway(here));
  pellow->process().kill();
  ASSERT_TRUE(desktop.switchTo(0));
  ASSERT_NO_FATAL_FAILURE(launch());
  EXPECT_TRUE(pellow->hasLogged("info Recovered 1 window(s) stranded by a previous run"))
      << pellow->process().standardError();
  expectGuestBack(here);
  EXPECT_EQ(desktopOf(here), 1);
  expectAllIsOver();
}

}  // namespace
}  // namespace pellow::desktop
