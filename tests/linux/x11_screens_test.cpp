#include "tests/desktop/monitors.h"
#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

TEST_F(X11DesktopTest, ScaledScreensMeasureInPoints) {
  const auto window = client.open("Scaled", {200, 100, 400, 300});
  const auto scaled = open(desktop.display(), 2).value();
  EXPECT_EQ(scaled->screens().main()->frame, AppKitRect(0, 0, 640, 400));
  EXPECT_EQ(scaled->toPixels({10, 20, 30, 40}), (pellow::PixelRect{20, 680, 60, 80}));
  EXPECT_EQ(scaled->fromPixels({20, 680, 60, 80}), AppKitRect(10, 20, 30, 40));
  move(windowNamed(*scaled, pid, "Scaled"), 150.5, 60);
  EXPECT_EQ(desktop.frame(window).x, 301);
  EXPECT_EQ(desktop.frame(window).y, 120);
  desktop.movePointer(300, 200);
  EXPECT_EQ(scaled->eventMonitors().pointerLocation(), (AppKitPoint{150, 300}));
}

TEST_F(X11DesktopTest, MonitorsComeAndGoAroundWindows) {
  const auto frames = [&] {
    std::vector<AppKitRect> found;
    for (const auto& screen : x11->screens().all()) found.push_back(screen.frame);
    return found;
  };
  const auto expectFrames = [&](const std::vector<AppKitRect>& expected) {
    EXPECT_TRUE(until([&] { return frames() == expected; }));
    EXPECT_EQ(frames(), expected);
  };
  // Three of them; the primary one is neither the first nor at the origin of the X screen.
  Monitors monitors(desktop.display());
  monitors.plug("left", {0, 0, 480, 800});
  monitors.plug("middle", {480, 100, 480, 600}, true);
  monitors.plug("right", {960, 0, 320, 800});
  expectFrames({{0, 0, 480, 600}, {-480, -100, 480, 800}, {480, -100, 320, 800}});
  const auto leftID = x11->screens().all()[1].displayID;

  const auto window = client.open("Guest", {50, 150, 300, 200});
  const auto home = desktop.frame(window);
  const auto element = windowNamed(*x11, pid, "Guest");
  EXPECT_EQ(read<QuartzPoint>(element, "AXPosition"),
            (QuartzPoint{home.x - 480.0, home.y - 100.0}));
  EXPECT_EQ(x11->screens().main()->frame, AppKitRect(-480, -100, 480, 800));
  move(element, 490, -90);
  EXPECT_EQ(desktop.frame(window), (PixelRect{970, 10, home.width, home.height}));
  EXPECT_EQ(x11->screens().main()->frame, AppKitRect(480, -100, 320, 800));

  // Parked beside the left monitor, which goes.
  move(element, 1 - 480.0 - home.width, home.y - 100.0);
  for (const auto* name : {"right", "middle", "left"}) monitors.unplug(name);
  monitors.plug("middle", {0, 0, 960, 800}, true);
  expectFrames({{0, 0, 960, 800}});
  move(element, 200, 100);
  EXPECT_EQ(desktop.frame(window), (PixelRect{200, 100, home.width, home.height}));
  monitors.plug("left", {960, 0, 320, 800});
  expectFrames({{0, 0, 960, 800}, {960, 0, 320, 800}});
  EXPECT_EQ(x11->screens().all()[1].displayID, leftID);
}

}  // namespace
}  // namespace pellow::desktop
