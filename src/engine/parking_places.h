#pragma once

#include <optional>

#include "access/displays.h"
#include "base/geometry.h"
#include "base/log.h"
#include "model/strip_edge.h"
#include "model/tab_zone.h"

namespace pellow {

// The side that a zone's windows slide to: its own, or the nearer one.
StripEdge parkingSide(const TabZone& zone);

// Where a window slid off the side of the screen goes, and where it comes back to. Goes by the
// displays as they are now; changes nothing. Quartz space, main thread.
class ParkingPlaces {
 public:
  explicit ParkingPlaces(const Displays& displays) : displays_(displays) {}

  // The origin that leaves a sliver of the window on the outermost display of that side, as the
  // system lets no window leave the displays entirely:
  //
  //      outermost display
  //   ┌─────────────────────┐
  //   │                     │
  //   │                     │
  //   │                    ┌┼──────────┐  28 points above the bottom
  //   └────────────────────┼┘  window  │
  //                        └───────────┘  1 point wide
  //
  // Only the left and right edges count. Without a display it is the frame's own origin.
  QuartzPoint parkOrigin(const QuartzRect& frame, StripEdge edge) const;

  // The frame's own origin when at least 60 % of the frame lies on the displays, else
  // `onScreenOrigin`.
  QuartzPoint restoreOrigin(const QuartzRect& frame) const;

  // The same for a window coming back now: logs when it cannot stand where it stood.
  QuartzPoint restoreOrigin(const QuartzRect& frame, const Log& log) const;

  // The nearest origin that keeps the frame inside the visible frame of the main display; a frame
  // too large is aligned to its left or top. Nothing without a display.
  std::optional<QuartzPoint> onScreenOrigin(const QuartzRect& frame) const;

 private:
  bool canStay(const QuartzRect& frame) const;

  const Displays& displays_;
};

}  // namespace pellow
