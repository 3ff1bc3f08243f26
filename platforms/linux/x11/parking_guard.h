#pragma once

#include <set>

#include "platforms/linux/x11/window_manager.h"

namespace pellow {

// Puts windows that are parked beyond the monitors back there when they are dragged into sight by a
// window manager that takes over, that arranges the windows on other monitors than before, or that
// does only now what it was asked before they were parked without it. One that is brought back at
// any other time is left alone: that is the will of the user. Main thread.
class ParkingGuard {
 public:
  ParkingGuard(X11Server& server, WindowManager& windowManager)
      : server_(server), windowManager_(windowManager) {}

  // The window manager may arrange all windows for a moment: it is a new one and has adopted them,
  // or the monitors have changed.
  void arrangementBegins();

  // Notes an event of a window; the next `dispatch` acts on it.
  void handle(const xcb_generic_event_t& event);
  void dispatch();

 private:
  X11Server& server_;
  WindowManager& windowManager_;
  std::set<xcb_window_t> moved_;
  std::set<xcb_window_t> perhapsBack_;  // some of those that have moved
  Deadline arrangementEnd_;
};

}  // namespace pellow
