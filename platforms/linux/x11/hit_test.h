#pragma once

#include <optional>

#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// What the pointer would meet at a point of the X screen.
struct Hit {
  WindowFacts window;  // with its identity, its state and its kind
  ProcessID pid = 0;
  // The window of the frame that minimizes the hit one, when it is this that was met.
  std::optional<xcb_window_t> minimizeButton;
};

// Nothing where no window manager's client and no frame around one is met: on the bare desktop, on
// menus and tooltips. Windows that take no input are not met.
//
// The minimize button is known where it is a window of the frame that can be told from its
// neighbours: with openbox by the button layout in its configuration, with icewm by its name. With
// window managers that draw their buttons into the frame, and with fluxbox and xfwm4, whose button
// layout is not read, there is none; nor is there one in a title bar that an application draws.
std::expected<std::optional<Hit>, AXError> hitTest(X11Server& server, PixelPoint point,
                                                   Deadline deadline);

// Where a window without a frame stands on the X screen.
std::expected<PixelRect, AXError> placeOf(X11Server& server, xcb_window_t window,
                                          Deadline deadline);

}  // namespace pellow
