#include <signal.h>

#include <array>
#include <chrono>

#include "platforms/linux/x11/pixel_image.h"
#include "platforms/linux/x11/x11_connection.h"
#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

constexpr auto standardWindow = "AXStandardWindow";

TEST_F(X11DesktopTest, TellsApplicationsAndTheirWindows) {
  const auto first = client.open("Erste – первая", {100, 50, 400, 300});
  client.openDialog("Question", {200, 150, 200, 100}, first);

  const auto application = x11->workspace().application(pid).value();
  EXPECT_EQ(application.bundleID, "Testclient");
  EXPECT_EQ(application.localizedName, "Testclient");
  EXPECT_EQ(application.activationPolicy, ActivationPolicy::regular);
  const auto& icon = dynamic_cast<const PixelImage&>(application.icon.value().object());
  EXPECT_EQ(icon.pixels().front(), 0xff000000 | TestClient::iconLeft);
  EXPECT_EQ(icon.pixels().back(), 0xff000000 | TestClient::iconRight);
  EXPECT_EQ(x11->workspace().application(pid)->icon, application.icon);
  EXPECT_EQ(x11->workspace().runningApplications().front().pid, pid);
  EXPECT_FALSE(x11->workspace().application(1));

  const auto own = windows(*x11, pid);
  ASSERT_EQ(own.size(), 2u);
  EXPECT_EQ(own[0].pid(), pid);
  EXPECT_EQ(read<std::string>(own[0], "AXTitle"), "Erste – первая");
  EXPECT_EQ(read<std::string>(own[0], "AXSubrole"), standardWindow);
  EXPECT_EQ(read<std::string>(own[1], "AXSubrole"), "AXDialog");
  EXPECT_EQ(read<AXElement>(own[0], "AXParent"), x11->accessibility().application(pid));
  EXPECT_EQ(windows(*x11, pid), own);

  // A title may be of any length; a character cut in two is replaced.
  std::string longTitle = "x";
  for (int i = 0; i < 15'000; ++i) longTitle += "ж";
  client.setTitle(first, longTitle);
  const auto shortened = longTitle.substr(0, 16'383) + "\xEF\xBF\xBD";
  EXPECT_TRUE(eventually([&] { return read<std::string>(own[0], "AXTitle") == shortened; }));
}

// A restored window is given the keys twice; the user may turn to another in between.
TEST_F(X11DesktopTest, WhoAsksTwiceTakesTheKeysOnce) {
  const auto window = client.open("First", {100, 50, 400, 300});
  TestClient other(desktop, "Otherclient");
  const auto otherWindow = other.open("Other", {500, 400, 300, 200});
  const auto element = windowNamed(*x11, pid, "First");
  const auto application = x11->accessibility().application(pid);
  // For half a second the second request counts as a repeat; a slow machine takes longer.
  std::chrono::steady_clock::time_point asked;
  do {
    ASSERT_TRUE(element.performAction("AXRaise", patience));
    ASSERT_TRUE(x11->workspace().activate(pid));
    asked = std::chrono::steady_clock::now();
    ASSERT_TRUE(eventually([&] { return desktop.activeWindow() == window; }));
    ASSERT_TRUE(desktop.activate(otherWindow));
    ASSERT_TRUE(application.setAttribute("AXFrontmost", true, patience));
  } while (std::chrono::steady_clock::now() - asked > std::chrono::milliseconds(500));
  // Answered once the window manager has done everything before it.
  ASSERT_TRUE(element.setAttribute("AXPosition", QuartzPoint{150, 90}, patience));
  EXPECT_EQ(desktop.activeWindow(), otherWindow);

  ASSERT_TRUE(element.performAction("AXRaise", patience));
  ASSERT_TRUE(application.setAttribute("AXFrontmost", true, patience));
  EXPECT_TRUE(eventually([&] { return desktop.activeWindow() == window; }));
}

TEST_F(X11DesktopTest, HidesAnApplicationWithoutItsMinimizedWindows) {
  client.open("First", {100, 50, 400, 300});
  const auto second = client.open("Second", {300, 250, 400, 300});
  const auto element = windowNamed(*x11, pid, "First");
  EXPECT_EQ(errorOf(element.setAttribute("AXMinimized", std::string("yes"), patience)),
            AXError::illegalArgument);
  ASSERT_TRUE(element.setAttribute("AXMinimized", true, patience));
  ASSERT_TRUE(x11->workspace().hide(pid));
  EXPECT_TRUE(desktop.hasState(second, "_NET_WM_STATE_HIDDEN"));
  EXPECT_EQ(read<bool>(windowNamed(*x11, pid, "Second"), "AXMinimized"), false);
  ASSERT_TRUE(x11->workspace().unhide(pid));
  EXPECT_FALSE(desktop.hasState(second, "_NET_WM_STATE_HIDDEN"));
  EXPECT_EQ(read<bool>(element, "AXMinimized"), true);
  EXPECT_FALSE(x11->workspace().hide(1));
}

TEST_F(X11DesktopTest, NoAnswerInTimeIsNotAnEmptyOne) {
  constexpr std::uint8_t escape = 9;  // an X key code
  client.open("Guest", {100, 50, 400, 300});
  const auto own = windows(*x11, pid);
  const auto application = x11->accessibility().application(pid);
  const auto keys = x11->eventMonitors().addLocalKeyDown([](const KeyEvent&) { return false; });

  client.grabServer(3000);
  x11->deliverLocalKeyDown(escape, 0);
  for (auto answer = read<std::vector<AXElement>>(application, "AXWindows", 0.25); answer != own;
       answer = read<std::vector<AXElement>>(application, "AXWindows", 0.25))
    ASSERT_EQ(errorOf(answer), AXError::cannotComplete);
  EXPECT_FALSE(x11->deliverLocalKeyDown(escape, 0));
}

// openbox animates the frame from the taskbar to its place.
TEST_F(X11DesktopTest, AWindowThatComesBackIsAtHomeAtOnce) {
  const auto window = client.open("Guest", {150, 80, 500, 350});
  const auto home = desktop.frame(window);
  const auto element = windowNamed(*x11, pid, "Guest");
  const QuartzPoint origin{double(home.x), double(home.y)};
  for (int round = 0; round < 5; ++round) {
    ASSERT_TRUE(element.setAttribute("AXMinimized", true, patience));
    EXPECT_EQ(read<QuartzPoint>(element, "AXPosition"), origin);
    ASSERT_TRUE(eventually([&] { return !desktop.isShown(window); }));
    ASSERT_TRUE(round % 2 == 0 ? element.setAttribute("AXMinimized", false, patience).has_value()
                               : desktop.activate(window));
    EXPECT_EQ(read<QuartzPoint>(element, "AXPosition"), origin);
    ASSERT_TRUE(
        eventually([&] { return desktop.isShown(window) && desktop.frame(window) == home; }));
  }
}

// The window manager has not heard yet of the new size when the move is asked for.
TEST_F(X11DesktopTest, AMoveDoesNotUndoAResizing) {
  const auto guest = client.open("Guest", {50, 150, 300, 200});
  const auto element = windowNamed(*x11, pid, "Guest");
  const auto other = X11Connection::open(desktop.display()).value();
  desktop.windowManager().send(SIGSTOP);
  constexpr std::array<std::uint32_t, 2> size{420, 260};
  xcb_configure_window(other->raw(), guest, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                       size.data());
  ASSERT_TRUE(other->isAnswered(deadlineIn(30)));
  (void)element.setAttribute("AXPosition", QuartzPoint{400, 300}, 0.5);
  desktop.windowManager().send(SIGCONT);
  EXPECT_TRUE(eventually([&] {
    const auto content = desktop.content(guest);
    return desktop.frame(guest).x == 400 && content.width == 420 && content.height == 260;
  })) << desktop.content(guest);
}

}  // namespace
}  // namespace pellow::desktop
