#pragma once

#include <set>

#include "platforms/linux/x11/parked_frames.h"

namespace pellow {

// Puts windows parked beyond the monitors back there when a window manager drags them into sight:
// one that takes over, that arranges them on changed monitors, or that only now does what it was
// asked before they were parked without it. A window that comes back at any other time is left
// alone: the user wants it. Main thread.
class ParkingGuard {
 public:
  ParkingGuard(X11Server& server, ParkedFrames& frames) : server_(server), frames_(frames) {}

  // For a moment the window manager may rearrange all windows: a new one has adopted them, or the
  // monitors have changed.
  void arrangementBegins();

  // Notes an event of a window; the next `dispatch` acts on it.
  void handle(const xcb_generic_event_t& event);
  void dispatch();

 private:
  X11Server& server_;
  ParkedFrames& frames_;
  std::set<xcb_window_t> moved_;
  std::set<xcb_window_t> perhapsBack_;  // some of those that have moved
  Deadline arrangementEnd_;
};

}  // namespace pellow
