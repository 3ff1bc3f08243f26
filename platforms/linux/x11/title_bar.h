#pragma once

#include <vector>

#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// Whether a window of a frame is the button that minimizes `client`. `title` is its parent. Reads
// what the running window manager tells about its buttons; false where it tells nothing.
bool isMinimizeButton(X11Server& server, xcb_window_t button, xcb_window_t title,
                      xcb_window_t client, Deadline deadline);

}  // namespace pellow
