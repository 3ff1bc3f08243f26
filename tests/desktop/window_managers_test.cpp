#include "tests/desktop/window_managers_test.h"

#include <filesystem>

namespace pellow::desktop {
namespace {

constexpr PixelRect place{150, 120, 500, 300};

TEST_F(WindowManagers, OffScreen) {
  const auto guest = open(client, "Guest", place);
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  // It stays there whatever happens to it and to others.
  if (minimizesInstead) {
    EXPECT_TRUE(pellow->journal().empty());
    ASSERT_TRUE(desktop.activate(client.open("Other", {300, 300, 300, 200})));
    client.setTitle(guest.window, "Guest, renamed");
    return expectAway({guest});
  }
  const auto parked = pellow->journal().at(0).at("parkedOrigin");
  const PixelRect expected{parked.at(0), parked.at(1), guest.home.width, guest.home.height};
  EXPECT_EQ(expected.x, desktop.screen().width - 1);
  EXPECT_EQ(desktop.frame(guest.window), expected);
  ASSERT_TRUE(desktop.activate(client.open("Other", {300, 300, 300, 200})));
  client.setTitle(guest.window, "Guest, renamed");
  ASSERT_TRUE(desktop.activate(guest.window));
  EXPECT_EQ(desktop.frame(guest.window), expected);
  expectAway({guest});
}

TEST_F(WindowManagers, SliverOnly) {
  const auto guest = open(client, "Guest", place);
  // Nothing else may be in sight: no picture on its way to the tab.
  ASSERT_NO_FATAL_FAILURE(launch({{"animateFlight", false}}));
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  const auto whileParked = stillPicture(1);
  client.destroy(guest.window);
  ASSERT_TRUE(hasTabs(0));
  EXPECT_TRUE(eventually([&] { return inSight() == whileParked; }));
}

TEST_F(WindowManagers, BackInPlace) {
  const auto area = desktop.workArea();
  const auto guest = open(client, "Guest", place);
  const auto corner = open(client, "Corner", {area.x, area.y, 300, 200});
  const auto small = open(client, "Small", {900, 350, 160, 90});
  // Pictures fly over the strip all the time, and every click goes through them.
  ASSERT_NO_FATAL_FAILURE(launch({{"animationDuration", 1.2}}));
  for (const auto& each : {guest, corner, small}) ASSERT_NO_FATAL_FAILURE(expectRoundTrips(each));
}

TEST_F(WindowManagers, Minimize) {
  const auto guest = open(client, "Guest", place);
  client.open("Other", {300, 300, 300, 200});
  ASSERT_NO_FATAL_FAILURE(launch({{"mechanism", "minimize"}}));
  for (const bool byClick : {true, false}) {
    ASSERT_NO_FATAL_FAILURE(putAway(guest));
    EXPECT_TRUE(eventually([&] { return isMinimized(guest); }));
    EXPECT_TRUE(pellow->journal().empty());
    byClick ? pellow->clickTab(0) : press('r');
    expectHome({guest});
    EXPECT_TRUE(becomesActive(guest));
    expectAllIsOver();
  }
}

TEST_F(WindowManagers, Maximized) {
  const auto window = client.open("Guest", place);
  client.maximizeVertically(window);
  ASSERT_NO_FATAL_FAILURE(awaitState(window, "_NET_WM_STATE_MAXIMIZED_VERT"));
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(expectRoundTrip(window, {"_NET_WM_STATE_MAXIMIZED_VERT"}));
  EXPECT_FALSE(desktop.hasState(window, "_NET_WM_STATE_MAXIMIZED_HORZ"));

  const auto large = client.open("Large", place);
  client.maximize(large);
  ASSERT_NO_FATAL_FAILURE(awaitState(large, "_NET_WM_STATE_MAXIMIZED_HORZ"));
  ASSERT_NO_FATAL_FAILURE(
      expectRoundTrip(large, {"_NET_WM_STATE_MAXIMIZED_HORZ", "_NET_WM_STATE_MAXIMIZED_VERT"}));
}

TEST_F(WindowManagers, FullScreen) {
  const auto window = client.open("Guest", place);
  client.makeFullScreen(window);
  ASSERT_NO_FATAL_FAILURE(awaitState(window, "_NET_WM_STATE_FULLSCREEN"));
  EXPECT_EQ(desktop.frame(window), desktop.screen());
  ASSERT_NO_FATAL_FAILURE(launch());
  expectRoundTrip(window, {"_NET_WM_STATE_FULLSCREEN"});
}

TEST_F(WindowManagers, Undecorated) {
  const auto bare = guestOf(client.openUndecorated("Bare", place));
  EXPECT_EQ(bare.home, desktop.content(bare.window));
  ASSERT_NO_FATAL_FAILURE(launch());
  expectRoundTrips(bare);
}

TEST_F(WindowManagers, OwnShadow) {
  const auto shadowed = guestOf(client.openWithShadow("Shadowed", place));
  EXPECT_EQ(shadowed.home.width, place.width);
  ASSERT_NO_FATAL_FAILURE(launch());
  expectRoundTrips(shadowed);
}

TEST_F(WindowManagers, Strip) {
  const auto area = desktop.workArea();
  const auto below = client.open("Below", {area.x + area.width - 400, area.y + 40, 380, 600});
  ASSERT_TRUE(desktop.activate(below));
  ASSERT_NO_FATAL_FAILURE(launch());
  PixelRect expected;
  const auto standsInItsPlace = [&] {
    // The window manager's own bar may claim its part of the screen a moment after the start.
    const auto now = desktop.workArea();
    expected = {now.x + now.width - 50, now.y + now.height / 2 - 30, 44, 60};
    return desktop.content(pellow->strip()) == expected;
  };
  EXPECT_TRUE(eventually(standsInItsPlace)) << desktop.content(pellow->strip());
  EXPECT_EQ(desktop.activeWindow(), below);

  const auto isAbove = [&](WindowID window) {
    const auto beneath = TestClient::colourOf(window);
    return eventually([&] {
      const auto strip = pellow->picture();
      return desktop.picture(desktop.content(window)).count(beneath) > 0 &&
             4 * strip.count(beneath) < strip.width * strip.height;
    });
  };
  EXPECT_TRUE(isAbove(below));
  keepPicture();
  desktop.click(expected.x + expected.width / 2, expected.y + expected.height / 2);
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  EXPECT_EQ(desktop.activeWindow(), below);
  EXPECT_TRUE(isAbove(client.open("Another", {area.x + area.width - 500, 200, 490, 400})));
  EXPECT_NE(desktop.activeWindow(), pellow->strip());
}

TEST_F(WindowManagers, HidingStrip) {
  const auto area = desktop.workArea();
  const auto right = area.x + area.width;
  const auto below = open(client, "Below", {right - 420, area.y + 40, 400, 600});
  client.open("Beside", {100, 300, 200, 100});
  ASSERT_NO_FATAL_FAILURE(launch({{"autoHideStrip", true}}));
  const auto middle = area.y + area.height / 2;
  // Of 40 by 20 points where it stands when it is out, and where its sliver is.
  const auto isOut = [&] { return pixelsOf(below, {right - 46, middle - 10, 36, 20}) == 0; };
  const auto isIn = [&] {
    return pixelsOf(below, {right - 60, middle - 10, 40, 20}) == 40 * 20 &&
           desktop.content(pellow->strip()).x == right - 10;
  };
  desktop.movePointer(150, middle);
  EXPECT_TRUE(eventually(isIn)) << desktop.content(pellow->strip());
  for (int round = 0; round < 2; ++round) {
    desktop.movePointer(right - 4, middle);
    EXPECT_TRUE(eventually(isOut)) << desktop.content(pellow->strip());
    keepPicture();
    desktop.movePointer(150, middle);
    EXPECT_TRUE(eventually(isIn)) << desktop.content(pellow->strip());
  }
}

TEST_F(WindowManagers, AfterCrash) {
  const auto maximized = client.open("Large", {200, 200, 400, 250});
  client.maximize(maximized);
  ASSERT_NO_FATAL_FAILURE(awaitState(maximized, "_NET_WM_STATE_MAXIMIZED_HORZ"));
  const auto large = guestOf(maximized);
  const auto guest = open(client, "Guest", place);
  ASSERT_NO_FATAL_FAILURE(launch());
  for (const auto& each : {guest, large}) ASSERT_NO_FATAL_FAILURE(putOffScreen(each));
  pellow->process().kill();

  ASSERT_NO_FATAL_FAILURE(launch());
  if (minimizesInstead) {
    noteOnce("What was minimized stays so, in the taskbar.");
    expectAway({guest, large});
    for (const auto& each : {large, guest}) ASSERT_TRUE(desktop.activate(each.window));
  }
  // The large one may cover the other.
  expectHome({large});
  ASSERT_TRUE(desktop.activate(guest.window));
  expectHome({guest});
  EXPECT_TRUE(desktop.hasState(maximized, "_NET_WM_STATE_MAXIMIZED_HORZ"));
  EXPECT_EQ(pellow->hasLogged("info Recovered 2 window(s) stranded by a previous run"),
            !minimizesInstead)
      << pellow->process().standardError();
  expectAllIsOver();
}

TEST_F(WindowManagers, Replaced) {
  const std::vector guests{open(client, "Guest", place),
                           open(client, "Second", {300, 250, 400, 250})};
  ASSERT_NO_FATAL_FAILURE(launch());
  for (const auto& each : guests) ASSERT_NO_FATAL_FAILURE(putOffScreen(each));

  const auto manager = chosenManager();
  if (manager.replace.empty()) {
    noteOnce("does not take over from another one; killed and started again instead.");
    desktop.restartWindowManager();
  } else {
    auto successor = manager.command;
    successor.push_back(manager.replace);
    desktop.replaceWindowManager(successor);
  }
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  // Whatever the new one has made of them, no more than the sliver stays in sight.
  expectAway(guests);
  ASSERT_EQ(pellow->tabCount(), 2);
  for (const auto& each : guests) ASSERT_NO_FATAL_FAILURE(bringBack(each, true));
  expectAllIsOver();
  ASSERT_NO_FATAL_FAILURE(expectRoundTrips(guests[0]));
}

// KWin's compositor draws an outline around frames, and Chromium a shadow around its window: they
// stay beside the sliver.
constexpr int outline = 3;
constexpr int shadow = 40;

TEST_F(WindowManagers, Shaded) {
  if (!desktop.supports("_NET_WM_STATE_SHADED")) return noteOnce("has no shaded windows.");
  ASSERT_NO_FATAL_FAILURE(launch());
  const auto without = bareDesktop(outline);
  const auto guest = open(client, "Guest", place);
  const auto isShaded = [&] { return desktop.hasState(guest.window, "_NET_WM_STATE_SHADED"); };
  desktop.changeState(guest.window, "_NET_WM_STATE_SHADED", true);
  ASSERT_TRUE(eventually([&] { return isShaded() && isOutOfSight(guest); }));
  // Its title bar is all there is to see.
  const auto shaded = stillPicture(outline);
  EXPECT_NE(shaded, without);
  for (const bool byClick : {true, false}) {
    // To activate it would unshade it, and mutter gives the keyboard to nobody.
    press('a');
    ASSERT_TRUE(hasTabs(1)) << story(guest);
    EXPECT_TRUE(eventually([&] { return inSight(outline) == without; })) << story(guest);
    keepPicture();
    byClick ? pellow->clickTab(0) : press('r');
    EXPECT_TRUE(eventually([&] { return isShaded() && inSight(outline) == shaded; }))
        << story(guest);
    expectAllIsOver();
  }
  desktop.changeState(guest.window, "_NET_WM_STATE_SHADED", false);
  expectHome({guest});
}

TEST_F(WindowManagers, OtherDesktops) {
  ASSERT_TRUE(desktop.switchTo(1) && desktop.switchTo(0));
  const auto guest = open(client, "Guest", place);
  const auto there = open(client, "There", {700, 300, 300, 200});
  const auto desktopOf = [&](const Guest& each) {
    return desktop.values(each.window, "_NET_WM_DESKTOP").at(0);
  };
  desktop.sendToDesktop(there.window, 1);
  ASSERT_TRUE(eventually([&] { return desktopOf(there) == 1 && isOutOfSight(there); }));
  ASSERT_NO_FATAL_FAILURE(launch());
  press('a');
  expectAway({guest});
  ASSERT_TRUE(desktop.switchTo(1));
  // It was left alone, and the other does not follow before its tab is clicked.
  expectHome({there});
  EXPECT_TRUE(eventually([&] { return isOutOfSight(guest); })) << story(guest);
  EXPECT_TRUE(hasTabs(1));
  keepPicture();
  pellow->clickTab(0);
  expectHome({guest, there});
  EXPECT_EQ(desktopOf(guest), 1);
  EXPECT_TRUE(becomesActive(guest));
  expectAllIsOver();
}

TEST_F(WindowManagers, HiddenApplications) {
  TestClient other(desktop, "Other");
  const std::vector guests{open(client, "First", place),
                           open(client, "Second", {300, 250, 400, 250})};
  const auto bystander = open(other, "Bystander", {800, 200, 300, 200});
  ASSERT_NO_FATAL_FAILURE(launch({{"mechanism", "hideApp"}}));
  for (const bool byClick : {true, false}) {
    ASSERT_NO_FATAL_FAILURE(putAway(guests[1]));
    EXPECT_TRUE(eventually([&] { return isOutOfSight(guests[0]); }));
    keepPicture();
    expectHome({bystander});
    byClick ? pellow->clickTab(0) : press('r');
    expectHome(guests);
    EXPECT_TRUE(becomesActive(guests[1]));
    expectAllIsOver();
  }
}

TEST_F(WindowManagers, Docks) {
  const auto guest = open(client, "Guest", place);
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  const auto screen = desktop.screen();
  const auto stripAt = [&](int right) {
    return eventually([&] {
      const auto strip = desktop.content(pellow->strip());
      return strip.x + strip.width == right - 6;
    });
  };
  ASSERT_TRUE(stripAt(screen.width));
  const auto dock = client.openDock({screen.width - 60, 0, 60, screen.height}, "right");
  EXPECT_TRUE(stripAt(screen.width - 60)) << desktop.content(pellow->strip());
  expectAway({guest});
  pellow->clickTab(0);
  expectHome({guest});
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  client.destroy(dock);
  EXPECT_TRUE(stripAt(screen.width)) << desktop.content(pellow->strip());
  expectAway({guest});
  ASSERT_NO_FATAL_FAILURE(bringBack(guest, true));
  expectAllIsOver();
}

TEST_F(WindowManagers, ShowDesktop) {
  if (!desktop.supports("_NET_SHOWING_DESKTOP")) return noteOnce("cannot show the bare desktop.");
  const auto guest = open(client, "Guest", place);
  const auto other = open(client, "Other", {700, 200, 300, 200});
  // KWin only raises the desktop's own window.
  client.openTyped("DESKTOP", "Desktop", desktop.screen());
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  ASSERT_TRUE(desktop.showBareDesktop(true));
  // KWin leaves corners of windows at those of the screen.
  EXPECT_TRUE(eventually([&] { return !isSeenAt(other.home, other); })) << story(other);
  EXPECT_TRUE(isOutOfSight(guest));
  keepPicture();
  ASSERT_TRUE(desktop.showBareDesktop(false));
  expectHome({other});
  expectAway({guest});
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  EXPECT_EQ(pellow->tabCount(), 1) << story(other);
  ASSERT_NO_FATAL_FAILURE(bringBack(guest, true));
  expectAllIsOver();
}

TEST_F(WindowManagers, Typing) {
  const auto guests = openFive();
  ASSERT_NO_FATAL_FAILURE(launch());
  const auto getsKeyboard = [&](const Guest& guest) {
    return eventually([&] {
      return desktop.hasKeyboard(guest.window) && desktop.activeWindow() == guest.window;
    });
  };
  ASSERT_TRUE(getsKeyboard(guests.back()));
  for (int left = 4; left >= 0; --left) {
    press('t');
    ASSERT_TRUE(hasTabs(5 - left)) << story(guests[left]);
    if (left > 0) EXPECT_TRUE(getsKeyboard(guests[left - 1])) << story(guests[left]);
  }
  EXPECT_TRUE(eventually([&] {
    return std::ranges::none_of(guests,
                                [&](const auto& each) { return desktop.hasKeyboard(each.window); });
  }));
  expectAway(guests);
  pellow->clickTab(2);
  EXPECT_TRUE(getsKeyboard(guests[2]));
  expectHome({guests[2]});
}

// However fast they follow each other, each means another window.
TEST_F(WindowManagers, FivePresses) {
  const auto guests = openFive();
  ASSERT_NO_FATAL_FAILURE(launch());
  for (int presses = 0; presses < 5; ++presses) press('t');
  ASSERT_TRUE(hasTabs(5)) << pellow->tabCount() << " tabs\n" << story(guests[0]);
  expectAway(guests);
  press('r');
  expectHome(guests);
  expectAllIsOver();
}

struct Application {
  std::string name;
  std::string windowClass;
  Command command;
};

void PrintTo(const Application& application, std::ostream* out) { *out << application.name; }

// Real applications, as far as they are installed.
std::vector<Application> installedApplications() {
  std::vector<Application> applications{
      {"xterm", "XTerm", {"/usr/bin/xterm", "-fa", "DejaVu Sans Mono"}},
      // GTK 3, with a header bar
      {"hitori", "Hitori", {"/usr/games/hitori"}},
      {"qterminal", "qterminal", {"/usr/bin/qterminal"}},
      {"chromium",
       "Chromium",
       {"/usr/bin/chromium", "--no-sandbox", "--disable-gpu", "--no-first-run",
        "--no-default-browser-check", "--disable-background-networking",
        "--disable-component-update", "--disable-sync", "about:blank"}},
  };
  std::erase_if(applications,
                [](const auto& each) { return !std::filesystem::exists(each.command[0]); });
  return applications;
}

class RealApplications : public WindowManagers, public testing::WithParamInterface<Application> {
 protected:
  WindowID windowOf(const Application& application) const {
    for (const auto window : desktop.clients())
      if (desktop.bytes(window, "WM_CLASS").ends_with('\0' + application.windowClass + '\0'))
        return window;
    return 0;
  }

  // An application arranges its window for a while.
  void awaitCalm(WindowID window) {
    ASSERT_TRUE(comesToRest([&] { return desktop.frame(window); }, std::chrono::milliseconds(400)));
  }
};

TEST_P(RealApplications, AwayAndBack) {
  const auto application = GetParam();
  ASSERT_NO_FATAL_FAILURE(launch());
  const auto without = bareDesktop(shadow);
  end();
  const auto running = desktop.start(application.command, {{"GSETTINGS_BACKEND", "memory"}});
  WindowID window = 0;
  ASSERT_TRUE(eventually([&] { return (window = windowOf(application)) != 0; }))
      << running->standardError();
  ASSERT_TRUE(desktop.activate(window));
  ASSERT_NO_FATAL_FAILURE(awaitCalm(window));
  auto guest = guestOf(window);
  guest.colour.reset();
  for (const std::string mechanism : {"offscreen", "minimize", "hideApp"}) {
    SCOPED_TRACE(mechanism);
    ASSERT_NO_FATAL_FAILURE(launch({{"mechanism", mechanism}}));
    for (int round = 0; round < 2; ++round) {
      ASSERT_NO_FATAL_FAILURE(mechanism == "offscreen" ? putOffScreen(guest) : putAway(guest));
      EXPECT_TRUE(mechanism == "offscreen" || isMinimized(guest));
      EXPECT_TRUE(eventually([&] { return inSight(shadow) == without; }));
      keepPicture();
      pellow->clickTab(0);
      expectHome({guest});
      EXPECT_TRUE(eventually([&] { return inSight(shadow) != without; }));
      EXPECT_TRUE(becomesActive(guest));
      expectAllIsOver();
    }
    end();
    // The window manager may still be animating.
    expectHome({guest});
  }
}

INSTANTIATE_TEST_SUITE_P(Installed, RealApplications, testing::ValuesIn(installedApplications()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace pellow::desktop
