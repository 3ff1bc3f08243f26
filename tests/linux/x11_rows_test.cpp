#include <algorithm>

#include "tests/harness/monitors.h"
#include "tests/linux/x11_desktop_test.h"

// What the adapter makes of the less common states of windows, applications and screens.

namespace pellow::desktop {
namespace {

class X11Rows : public X11DesktopTest {
 protected:
  bool isShaded(WindowID window) const { return desktop.hasState(window, "_NET_WM_STATE_SHADED"); }
  // openbox says so a moment before it takes the window off the screen.
  bool becomesHidden(WindowID window) const {
    return eventually([&] {
      return desktop.hasState(window, "_NET_WM_STATE_HIDDEN") && !desktop.isShown(window);
    });
  }
  bool isMarked(WindowID window) const { return !desktop.values(window, "_PELLOW_HIDDEN").empty(); }
};

TEST_F(X11Rows, ShadedWindowsAreNotMinimizedAndComeBackShaded) {
  const auto window = client.open("Shaded", {100, 100, 400, 300});
  const auto element = windowNamed(*x11, pid, "Shaded");
  std::vector<std::string> heard;
  const auto watch = x11->accessibility().observe(
      x11->accessibility().application(pid), "AXWindowMiniaturized",
      [&](const AXElement&) { heard.push_back("minimized"); }, patience);
  const auto home = desktop.frame(window);
  desktop.changeState(window, "_NET_WM_STATE_SHADED", true);
  ASSERT_TRUE(eventually([&] { return isShaded(window); }));
  ASSERT_TRUE(x11->processEvents());
  EXPECT_EQ(read<bool>(element, "AXMinimized"), false);
  EXPECT_TRUE(heard.empty());

  move(element, 1279, 772);
  EXPECT_EQ(desktop.frame(window).x, 1279);
  move(element, home.x, home.y);
  EXPECT_TRUE(eventually([&] { return isShaded(window); }));
  TestClient other(desktop, "Other");
  other.open("Other", {600, 500, 200, 100});
  ASSERT_TRUE(element.performAction("AXRaise", patience));
  ASSERT_TRUE(x11->workspace().activate(pid));
  // When the window manager shows another window, it has done what it was asked before.
  other.open("Next", {700, 500, 200, 100});
  EXPECT_TRUE(eventually([&] { return isShaded(window); }));

  ASSERT_TRUE(element.setAttribute("AXMinimized", true, patience));
  EXPECT_EQ(read<bool>(element, "AXMinimized"), true);
  ASSERT_TRUE(until([&] { return !heard.empty(); }));
  EXPECT_EQ(heard.size(), 1u) << "told of before";
  ASSERT_TRUE(element.setAttribute("AXMinimized", false, patience));
  EXPECT_TRUE(eventually([&] { return isShaded(window); }));

  ASSERT_TRUE(x11->workspace().hide(pid));
  EXPECT_TRUE(becomesHidden(window));
  ASSERT_TRUE(x11->workspace().unhide(pid));
  EXPECT_TRUE(eventually([&] { return isShaded(window); }));
  EXPECT_EQ(desktop.values(window, "_PELLOW_STATE").size(), 0u);
}

TEST_F(X11Rows, AnXIDOfItsOwnProcessAnewIsAnotherWindow) {
  const auto window = client.open("Old", {100, 100, 300, 200});
  const auto old = windowNamed(*x11, pid, "Old");
  std::vector<std::string> heard;
  const auto note = [&](std::string name) {
    return [&, name](const AXElement&) { heard.push_back(name); };
  };
  const auto application = x11->accessibility().application(pid);
  const auto minimized = x11->accessibility().observe(application, "AXWindowMiniaturized",
                                                      note("minimized"), patience);
  const auto oldDestroyed =
      x11->accessibility().observe(old, "AXUIElementDestroyed", note("old destroyed"), patience);
  client.reconnect();
  // The adapter has seen no event of this when the window is there again.
  ASSERT_EQ(client.open("New", {100, 100, 300, 200}), window);
  const auto fresh = windowNamed(*x11, pid, "New");
  EXPECT_FALSE(fresh == old);
  EXPECT_EQ(errorOf(old.copyAttribute("AXTitle", patience)), AXError::invalidUIElement);
  EXPECT_EQ(errorOf(old.performAction("AXRaise", patience)), AXError::invalidUIElement);
  EXPECT_TRUE(until([&] { return heard.size() == 1; }));
  const auto freshDestroyed =
      x11->accessibility().observe(fresh, "AXUIElementDestroyed", note("new destroyed"), patience);
  ASSERT_TRUE(fresh.setAttribute("AXMinimized", true, patience));
  EXPECT_TRUE(until([&] { return heard.size() == 2; }));
  client.destroy(window);
  EXPECT_TRUE(until([&] { return heard.size() == 3; }));
  EXPECT_EQ(heard, (std::vector<std::string>{"old destroyed", "minimized", "new destroyed"}));
}

TEST_F(X11Rows, AHiddenApplicationComesBackAfterACrash) {
  ASSERT_TRUE(desktop.switchTo(1) && desktop.switchTo(0));
  const auto first = client.open("First", {100, 50, 400, 300});
  const auto second = client.open("Second", {300, 250, 400, 300});
  const auto there = client.open("There", {500, 350, 300, 200});
  desktop.sendToDesktop(there, 1);
  const auto desktopOf = [&](WindowID window) {
    return desktop.values(window, "_NET_WM_DESKTOP").at(0);
  };
  ASSERT_TRUE(eventually([&] { return desktopOf(there) == 1; }));

  ASSERT_TRUE(x11->workspace().hide(pid));
  EXPECT_TRUE(becomesHidden(first) && becomesHidden(second));
  EXPECT_TRUE(isMarked(first) && !isMarked(there));
  x11.reset();
  x11 = open(desktop.display()).value();
  for (const auto& window : windows(*x11, pid)) EXPECT_EQ(read<bool>(window, "AXMinimized"), false);
  ASSERT_TRUE(x11->workspace().unhide(pid));
  EXPECT_TRUE(eventually([&] { return desktop.isShown(first) && desktop.isShown(second); }));
  ASSERT_TRUE(desktop.switchTo(1));
  EXPECT_TRUE(eventually([&] { return desktop.isShown(there); }));
}

TEST_F(X11Rows, OnlyOrdinaryWindowsAreOrdinary) {
  std::vector<WindowID> ordinary;
  for (int index = 0; index < 20; ++index)
    ordinary.push_back(client.open("Many", {40 + 20 * index, 40 + 15 * index, 300, 200}));
  client.openDialog("Question", {200, 150, 200, 100}, ordinary.front());
  client.openTyped("SPLASH", "Splash", {400, 300, 200, 100});
  client.openTyped("UTILITY", "Tools", {500, 300, 200, 100});
  client.openDock({0, 0, 1280, 24});
  const auto own = windows(*x11, pid);
  EXPECT_EQ(std::ranges::count_if(own,
                                  [](const auto& window) {
                                    return read<std::string>(window, "AXSubrole") ==
                                           "AXStandardWindow";
                                  }),
            20);
  EXPECT_EQ(own.size(), 22u);

  TestClient quiet(desktop, "Quiet");
  quiet.openSkippingTaskbar("Quiet", {600, 500, 200, 100});
  EXPECT_EQ(x11->workspace().application(quiet.process().pid())->activationPolicy,
            ActivationPolicy::accessory);
  TestClient unnamed(desktop, "Unnamed");
  unnamed.openAnonymous("Anybody", {600, 100, 300, 200});
  const auto application = x11->workspace().application(unnamed.process().pid()).value();
  EXPECT_FALSE(application.bundleID);
  EXPECT_EQ(application.activationPolicy, ActivationPolicy::regular);
  move(windowNamed(*x11, application.pid, "Anybody"), 1279, 700);
}

TEST_F(X11Rows, DocksKeepTheirSideOfTheirMonitor) {
  int changes = 0;
  const auto observer = x11->screens().onDidChangeParameters([&] { ++changes; });
  const auto expectVisible = [&](const std::vector<AppKitRect>& expected) {
    EXPECT_TRUE(until([&] {
      return std::ranges::equal(x11->screens().all(), expected, {}, &Screen::visibleFrame);
    })) << testing::PrintToString(expected);
    EXPECT_GT(std::exchange(changes, 0), 0);
  };
  Monitors monitors(desktop.display());
  monitors.plug("left", {0, 0, 640, 800}, true);
  monitors.plug("right", {640, 0, 640, 600});
  ASSERT_TRUE(until([&] { return x11->screens().all().size() == 2; }));
  changes = 0;
  const AppKitRect left{0, 0, 640, 800};
  const AppKitRect right{640, 200, 640, 600};
  const auto top = client.openDock({0, 0, 640, 30}, "top");
  expectVisible({{0, 0, 640, 770}, right});
  client.keepSide(top, "top", 50);  // along the whole side now
  expectVisible({{0, 0, 640, 750}, {640, 200, 640, 550}});
  client.destroy(top);
  expectVisible({left, right});
  struct Case {
    const char* side;
    PixelRect dock;
    std::vector<AppKitRect> visible;
  };
  for (const auto& [side, dock, visible] :
       {Case{"right", {1240, 0, 40, 600}, {left, {640, 200, 600, 600}}},
        Case{"left", {0, 0, 40, 800}, {{40, 0, 600, 800}, right}},
        Case{"bottom", {0, 760, 640, 40}, {{0, 40, 640, 760}, right}}}) {
    const auto window = client.openDock(dock, side);
    expectVisible(visible);
    client.destroy(window);
    expectVisible({left, right});
  }
}

}  // namespace
}  // namespace pellow::desktop
