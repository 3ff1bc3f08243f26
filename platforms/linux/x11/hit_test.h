#pragma once

#include <optional>

#include "platforms/linux/x11/title_bar.h"
#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// What the pointer would meet at a point of the X screen.
struct Hit {
  WindowFacts window;  // with its identity, its state, its frame and its kind
  ProcessID pid = 0;
  bool isMinimizeButton = false;  // of the window
};

// Nothing where there is neither a window manager's client nor a frame: on the bare desktop, on
// menus and tooltips. Windows that take no input do not count.
std::expected<std::optional<Hit>, AXError> hitTest(X11Server& server, TitleBars& titleBars,
                                                   PixelPoint point, Deadline deadline);

}  // namespace pellow
