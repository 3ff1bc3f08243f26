#pragma once

#include <vector>

#include "base/geometry.h"
#include "platform/screens.h"
#include "platforms/linux/x11/pixel_rect.h"

namespace pellow {

// The monitors on the X screen, and the way between its pixels and the program's points. The
// primary monitor, which may be anywhere on the X screen, is the origin of both point spaces.
//
//     X screen (pixels)              Quartz space (points)
//     (0,0)┌───────┐                 (-960,0)┌───────┐
//          │       ├─────────┐               │     (0,0)─────────┐
//          └───────┤ primary │               └───────┤ primary │
//                  └─────────┘                       └─────────┘
struct ScreenLayout {
  struct Monitor {
    DisplayID displayID = 0;
    PixelRect frame;
    PixelRect visibleFrame;  // without docks and panels

    bool operator==(const Monitor&) const = default;
  };

  std::vector<Monitor> monitors;  // the primary one first
  double scale = 1;               // pixels per point

  bool operator==(const ScreenLayout&) const = default;

  PixelPoint origin() const;  // of Quartz space
  QuartzRect toQuartz(const PixelRect& rect) const;
  AppKitRect toAppKit(const PixelRect& rect) const;
  AppKitPoint toAppKit(PixelPoint point) const;
  PixelPoint toPixels(QuartzPoint point) const;  // the nearest pixel
  PixelRect toPixels(const AppKitRect& rect) const;

  Screen screen(const Monitor& monitor) const;
  // The monitor with most of a rectangle; null when none has any of it.
  const Monitor* monitorWithMostOf(const PixelRect& rect) const;
  // Whether at least half of a rectangle lies on monitors.
  bool showsMostOf(const PixelRect& rect) const;

 private:
  double primaryHeight() const;  // points
};

}  // namespace pellow
