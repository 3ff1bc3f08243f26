#pragma once

#include <optional>

#include "access/target_window.h"
#include "base/geometry.h"
#include "base/log.h"
#include "engine/displays.h"
#include "engine/parking_journal.h"
#include "model/strip_edge.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/workspace.h"

namespace pellow {

// Where a window goes that is slid off the side of the screen, where it comes back to, and how the
// windows come back that a previous run left there. All coordinates are in Quartz space. Main
// thread; recovery calls other applications directly, one after another.
class OffscreenParking {
 public:
  OffscreenParking(const Displays& displays, ParkingJournal& journal, Accessibility& accessibility,
                   Workspace& workspace, Clock& clock, const Log& log, ProcessID ownProcess);

  // The origin that leaves a sliver of the window on the outermost display of that side, as the
  // system lets no window leave the displays whole:
  //
  //      outermost display
  //   ┌─────────────────────┐
  //   │                     │
  //   │                     │
  //   │                    ┌┼──────────┐  28 points above the bottom
  //   └────────────────────┼┘  window  │
  //                        └───────────┘  1 point wide
  //
  // Only the left and the right edge count. Without a display it is the frame's own origin.
  QuartzPoint parkOrigin(const QuartzRect& frame, StripEdge edge) const;

  // The frame's own origin when at least 60 % of the frame lies on the displays, else
  // `onScreenOrigin`.
  QuartzPoint restoreOrigin(const QuartzRect& frame) const;

  // The nearest origin that keeps the frame inside the visible frame of the main display; a frame
  // that is too large is aligned to its left or top. Nothing without a display.
  std::optional<QuartzPoint> onScreenOrigin(const QuartzRect& frame) const;

  // Brings back the windows that the journal says are still parked, and empties it. When some
  // record has no window, sweeps for hidden windows too. Records of an application that does not
  // answer stay for the next launch. Returns how many windows came back.
  int recoverStrandedWindows();

  // Moves every window of every ordinary application that cannot be seen and is not minimized onto
  // the main display. Returns how many came back.
  int rescueHiddenWindows(bool clearJournal);

 private:
  // Throws when the window is out of sight all the same.
  void moveIntoSight(const TargetWindow& window, Size size, QuartzPoint origin);

  const Displays& displays_;
  ParkingJournal& journal_;
  Accessibility& accessibility_;
  Workspace& workspace_;
  Clock& clock_;
  const Log& log_;
  const ProcessID ownProcess_;
};

}  // namespace pellow
