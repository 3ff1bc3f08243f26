#include "tests/desktop/window_managers_test.h"

#include <filesystem>

namespace pellow::desktop {
namespace {

bool overlaps(const PixelRect& a, const PixelRect& b) {
  return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

constexpr PixelRect place{150, 120, 500, 300};

TEST_F(WindowManagers, OffScreen) {
  const auto guest = open(client, "Guest", place);
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putAway(guest));
  const auto parked = pellow->journal().at(0).at("parkedOrigin");
  const PixelRect expected{parked.at(0), parked.at(1), guest.home.width, guest.home.height};
  EXPECT_EQ(expected.x, desktop.screen().width - 1);
  EXPECT_EQ(desktop.frame(guest.window), expected);

  // It stays there whatever happens to it and to others.
  ASSERT_TRUE(desktop.activate(client.open("Other", {300, 300, 300, 200})));
  client.setTitle(guest.window, "Guest, renamed");
  ASSERT_TRUE(desktop.activate(guest.window));
  EXPECT_EQ(desktop.frame(guest.window), expected);
}

TEST_F(WindowManagers, SliverOnly) {
  const auto guest = open(client, "Guest", place);
  // Nothing else may be in sight: no picture on its way to the tab.
  ASSERT_NO_FATAL_FAILURE(launch({{"animateFlight", false}}));
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  // The screen without the bars of the window manager, the strip and the sliver.
  const auto inSight = [&] {
    auto part = desktop.workArea();
    part.width = std::min(part.width, desktop.screen().width - 1 - part.x);
    auto picture = desktop.picture(part);
    const auto strip = desktop.content(pellow->strip());
    for (int y = 0; y < picture.height; ++y) {
      if (std::abs(part.y + y - strip.y - strip.height / 2) > 60) continue;
      const auto row = picture.pixels.begin() + std::ptrdiff_t(y) * picture.width;
      std::fill(row + std::max(0, strip.x - part.x), row + picture.width, 0);
    }
    return picture.pixels;
  };
  const auto whileParked = inSight();
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
    EXPECT_FALSE(desktop.isShown(guest.window));
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

  const auto isAbove = [&] {
    const auto outermost = desktop.outermostWindows();
    const auto top = std::ranges::find_if(outermost.rbegin(), outermost.rend(), [&](WindowID each) {
      return overlaps(desktop.content(each), expected);
    });
    return desktop.content(*top) == expected;
  };
  EXPECT_TRUE(isAbove());
  desktop.click(expected.x + expected.width / 2, expected.y + expected.height / 2);
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  EXPECT_EQ(desktop.activeWindow(), below);
  client.open("Another", {700, 200, 500, 400});
  EXPECT_TRUE(isAbove());
  EXPECT_NE(desktop.activeWindow(), pellow->strip());
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
  expectHome({guest, large});
  EXPECT_TRUE(desktop.hasState(maximized, "_NET_WM_STATE_MAXIMIZED_HORZ"));
  EXPECT_TRUE(pellow->hasLogged("info Recovered 2 window(s) stranded by a previous run"));
  expectAllIsOver();
}

TEST_F(WindowManagers, Replaced) {
  const std::vector guests{open(client, "Guest", place),
                           open(client, "Second", {300, 250, 400, 250})};
  ASSERT_NO_FATAL_FAILURE(launch());
  for (const auto& each : guests) ASSERT_NO_FATAL_FAILURE(putOffScreen(each));

  const auto manager = chosenManager();
  if (manager.replace.empty()) {
    note("can neither take over nor be replaced; killed and started again instead.");
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

  // An application arranges its window for a while; it is done when the frame is the same many
  // times in a row.
  void awaitCalm(WindowID window) {
    PixelRect last;
    int same = 0;
    ASSERT_TRUE(eventually([&] {
      const auto now = desktop.frame(window);
      same = now == last ? same + 1 : 0;
      last = now;
      return same >= 200;
    }));
  }
};

TEST_P(RealApplications, AwayAndBack) {
  const auto application = GetParam();
  const auto running = desktop.start(application.command, {{"GSETTINGS_BACKEND", "memory"}});
  WindowID window = 0;
  ASSERT_TRUE(eventually([&] { return (window = windowOf(application)) != 0; }))
      << running->standardError();
  ASSERT_TRUE(desktop.activate(window));
  ASSERT_NO_FATAL_FAILURE(awaitCalm(window));
  const auto guest = guestOf(window);
  for (const std::string mechanism : {"offscreen", "minimize", "hideApp"}) {
    SCOPED_TRACE(mechanism);
    ASSERT_NO_FATAL_FAILURE(launch({{"mechanism", mechanism}}));
    for (int round = 0; round < 2; ++round) {
      ASSERT_NO_FATAL_FAILURE(putAway(guest));
      EXPECT_TRUE(mechanism == "offscreen" ? isAway(guest) : !desktop.isShown(window));
      pellow->clickTab(0);
      expectHome({guest});
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
