#include <signal.h>

#include <algorithm>

#include "platforms/linux/x11/x11_connection.h"
#include "tests/harness/monitors.h"
#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

// How windows go away and come back between them is left to the desktop tests.
TEST_F(X11DesktopTest, MonitorsComeAndGoAndKeepTheirNumbers) {
  const auto expectFrames = [&](const std::vector<AppKitRect>& expected) {
    EXPECT_TRUE(until([&] {
      return std::ranges::equal(x11->screens().all(), expected, {}, &Screen::frame);
    })) << testing::PrintToString(expected);
  };
  // Three of them; the primary one is neither the first nor at the origin of the X screen.
  Monitors monitors(desktop.display());
  monitors.plug("left", {0, 0, 480, 800});
  monitors.plug("middle", {480, 100, 480, 600}, true);
  monitors.plug("right", {960, 0, 320, 800});
  expectFrames({{0, 0, 480, 600}, {-480, -100, 480, 800}, {480, -100, 320, 800}});
  const auto leftID = x11->screens().all()[1].displayID;

  client.open("Guest", {50, 150, 300, 200});
  EXPECT_EQ(x11->screens().main()->displayID, leftID);
  move(windowNamed(*x11, pid, "Guest"), 490, -90);
  EXPECT_EQ(x11->screens().main()->frame, AppKitRect(480, -100, 320, 800));

  for (const auto* name : {"right", "middle", "left"}) monitors.unplug(name);
  monitors.plug("middle", {0, 0, 960, 800}, true);
  expectFrames({{0, 0, 960, 800}});
  monitors.plug("left", {960, 0, 320, 800});
  expectFrames({{0, 0, 960, 800}, {960, 0, 320, 800}});
  EXPECT_EQ(x11->screens().all()[1].displayID, leftID);

  // A server that does not say in time where they are is asked again.
  std::vector<std::optional<DisplayID>> told;
  const auto observer = x11->screens().onDidChangeParameters(
      [&] { told.push_back(x11->screens().all().back().displayID); });
  desktop.windowManager().send(SIGSTOP);  // only the server may wake it
  monitors.plug("left", {960, 0, 300, 800});
  client.grabServer(2500);
  pollfd poller{x11->fileDescriptor(), POLLIN, 0};
  while (x11->screens().all().back().frame != AppKitRect(960, 0, 300, 800)) {
    ASSERT_EQ(poll(&poller, 1, 30'000), 1);
    ASSERT_TRUE(x11->processEvents());
  }
  EXPECT_FALSE(told.empty());
  for (const auto& displayID : told) EXPECT_EQ(displayID, leftID);
}

// mutter and its like have bars that reserve nothing by themselves.
TEST_F(X11DesktopTest, EachMonitorHasAWorkAreaOfItsOwn) {
  Monitors monitors(desktop.display());
  monitors.plug("left", {0, 0, 600, 800}, true);
  monitors.plug("right", {600, 100, 680, 700});
  const auto other = X11Connection::open(desktop.display()).value();
  const std::array<std::uint32_t, 8> areas{0, 30, 600, 770, 600, 100, 640, 650};
  const auto write = [&](const char* name) {
    xcb_change_property(other->raw(), XCB_PROP_MODE_REPLACE, other->root(),
                        internAtom(other->raw(), name), XCB_ATOM_CARDINAL, 32, areas.size(),
                        areas.data());
    ASSERT_TRUE(other->isAnswered(deadlineIn(30)));
  };
  write("_GTK_WORKAREAS_D1");  // of a desktop that is not shown
  write("_NET_WORKAREA");
  const auto showFrames = [&](const std::vector<AppKitRect>& frames) {
    return until([&] {
      return std::ranges::equal(x11->screens().all(), frames, {}, &Screen::visibleFrame);
    });
  };
  EXPECT_TRUE(showFrames({{0, 0, 600, 800}, {600, 0, 680, 700}}));
  write("_GTK_WORKAREAS_D0");
  write("_NET_WORKAREA");
  EXPECT_TRUE(showFrames({{0, 0, 600, 770}, {600, 50, 640, 650}}));
  EXPECT_EQ(x11->panels(), (std::vector<pellow::PixelRect>{
                               {0, 0, 600, 30}, {600, 750, 680, 50}, {1240, 100, 40, 650}}));
}

TEST_F(X11DesktopTest, JunkOfOthersMovesNeitherScreensNorWindows) {
  const auto guest = client.open("Guest", {50, 150, 300, 200});
  const auto window = windowNamed(*x11, pid, "Guest");
  const auto screens = x11->screens().all();
  const auto place = read<QuartzPoint>(window, "AXPosition");
  const auto size = read<Size>(window, "AXSize");
  const auto extents = desktop.values(guest, "_NET_FRAME_EXTENTS");

  const auto other = X11Connection::open(desktop.display()).value();
  const auto write = [&](xcb_window_t to, const char* name, const std::vector<std::uint32_t>& all) {
    xcb_change_property(other->raw(), XCB_PROP_MODE_REPLACE, to, internAtom(other->raw(), name),
                        XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(all.size()), all.data());
    ASSERT_TRUE(other->isAnswered(deadlineIn(30)));
  };
  const auto screensStay = [&] {
    int told = 0;
    const auto observer = x11->screens().onDidChangeParameters([&] { ++told; });
    pollfd poller{x11->fileDescriptor(), POLLIN, 0};
    while (poll(&poller, 1, 200) > 0) EXPECT_TRUE(x11->processEvents());
    return told == 0 && x11->screens().all() == screens;
  };
  const std::uint32_t large = INT32_MAX;
  for (const std::uint32_t desktopNumber : {UINT32_MAX, UINT32_MAX / 4, large}) {
    write(desktop.root(), "_NET_CURRENT_DESKTOP", {desktopNumber});
    EXPECT_TRUE(screensStay()) << desktopNumber;
  }
  write(desktop.root(), "_NET_WORKAREA", {large, large, large, large});
  EXPECT_TRUE(screensStay());
  write(guest, "_GTK_FRAME_EXTENTS", {large, large, large, large});
  EXPECT_EQ(read<Size>(window, "AXSize"), size);
  write(guest, "_GTK_FRAME_EXTENTS", {200, 200, 20, 20});
  EXPECT_EQ(read<Size>(window, "AXSize"), size) << "nothing is left of it";
  write(guest, "_NET_FRAME_EXTENTS", {large, large, large, large});
  const auto content = desktop.content(guest);
  EXPECT_EQ(read<Size>(window, "AXSize"), (Size{double(content.width), double(content.height)}));
  write(guest, "_NET_FRAME_EXTENTS", extents);
  EXPECT_EQ(read<QuartzPoint>(window, "AXPosition"), place);
}

}  // namespace
}  // namespace pellow::desktop
