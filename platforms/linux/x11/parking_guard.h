#pragma once

#include <set>

#include "platforms/linux/x11/window_manager.h"

namespace pellow {

// Puts windows that are parked beyond the monitors back there when another window manager takes
// over and drags them into sight. One that is brought back at any other time is left alone: that is
// the will of the user. Main thread.
class ParkingGuard {
 public:
  ParkingGuard(X11Server& server, WindowManager& windowManager)
      : server_(server), windowManager_(windowManager) {}

  // A new window manager has adopted the windows, and may still arrange them for a moment.
  void windowManagerChanged();

  // Notes an event of a window; the next `dispatch` acts on it.
  void handle(const xcb_generic_event_t& event);
  void dispatch();

 private:
  X11Server& server_;
  WindowManager& windowManager_;
  std::set<xcb_window_t> moved_;
  std::set<xcb_window_t> perhapsBack_;  // some of those that have moved
  Deadline takeoverEnd_;
};

}  // namespace pellow
