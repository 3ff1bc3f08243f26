#pragma once

#include "platforms/linux/x11/window_states.h"

namespace pellow {

// Puts windows in front of the others, without waiting for the window manager. Any thread.
class Foreground {
 public:
  Foreground(X11Server& server, WindowStates& states) : server_(server), states_(states) {}

  // In front on the current desktop, without giving it the keys.
  std::expected<void, AXError> raise(const WindowKey& window, Deadline deadline);

  // Gives the window the keys and puts it in front; a shaded one stays shaded.
  void activate(xcb_window_t window);

  void bringToCurrentDesktop(const WindowFacts& window, Deadline deadline);

 private:
  X11Server& server_;
  WindowStates& states_;
};

}  // namespace pellow
