#pragma once

#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// Where the keyboard is while no window has it: at a window that nobody sees and that hears
// nothing. X11 has no better place, for at the root window most window managers find it and give it
// to a window of their choice. Main thread.
class KeyboardRest {
 public:
  explicit KeyboardRest(X11Server& server) : server_(server) {}

  // Takes the keyboard from the window that has it.
  void take();

 private:
  xcb_window_t makeWindow();

  X11Server& server_;
  xcb_window_t window_ = XCB_WINDOW_NONE;  // lives as long as the connection
};

}  // namespace pellow
