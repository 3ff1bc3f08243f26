#include "platforms/linux/x11/screen_layout.h"

#include <cmath>

namespace pellow {

namespace {

int nearestPixel(double value) {
  // Far beyond what the X protocol can express, so that the cast is always defined.
  return static_cast<int>(std::lround(std::clamp(value, -1e6, 1e6)));
}

}  // namespace

PixelPoint ScreenLayout::origin() const {
  return monitors.empty() ? PixelPoint{} : monitors.front().frame.origin();
}

double ScreenLayout::primaryHeight() const {
  return monitors.empty() ? 0 : monitors.front().frame.height / scale;
}

QuartzRect ScreenLayout::toQuartz(const PixelRect& rect) const {
  return {(rect.x - origin().x) / scale, (rect.y - origin().y) / scale, rect.width / scale,
          rect.height / scale};
}

AppKitRect ScreenLayout::toAppKit(const PixelRect& rect) const {
  return Flip{primaryHeight()}.toAppKit(toQuartz(rect));
}

AppKitPoint ScreenLayout::toAppKit(PixelPoint point) const {
  return toAppKit(PixelRect{point.x, point.y, 0, 0}).origin;
}

PixelPoint ScreenLayout::toPixels(QuartzPoint point) const {
  return {origin().x + nearestPixel(point.x * scale), origin().y + nearestPixel(point.y * scale)};
}

PixelRect ScreenLayout::toPixels(const AppKitRect& rect) const {
  const QuartzRect quartz = Flip{primaryHeight()}.toQuartz(rect);
  const PixelPoint topLeft = toPixels(quartz.origin);
  const PixelPoint bottomRight = toPixels(QuartzPoint{quartz.maxX(), quartz.maxY()});
  return {topLeft.x, topLeft.y, bottomRight.x - topLeft.x, bottomRight.y - topLeft.y};
}

Screen ScreenLayout::screen(const Monitor& monitor) const {
  return {.displayID = monitor.displayID,
          .frame = toAppKit(monitor.frame),
          .visibleFrame = toAppKit(monitor.visibleFrame)};
}

const ScreenLayout::Monitor* ScreenLayout::monitorWithMostOf(const PixelRect& rect) const {
  const Monitor* best = nullptr;
  std::int64_t bestArea = 0;
  for (const auto& monitor : monitors) {
    const auto area = monitor.frame.intersection(rect).area();
    if (area <= bestArea) continue;
    best = &monitor;
    bestArea = area;
  }
  return best;
}

bool ScreenLayout::showsMostOf(const PixelRect& rect) const {
  std::int64_t shown = 0;
  for (const auto& monitor : monitors) shown += monitor.frame.intersection(rect).area();
  return 2 * shown >= rect.area();
}

}  // namespace pellow
