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

// Nothing where no window manager's client and no frame around one is met: on the bare desktop, on
// menus and tooltips. Windows that take no input are not met.
std::expected<std::optional<Hit>, AXError> hitTest(X11Server& server, TitleBars& titleBars,
                                                   PixelPoint point, Deadline deadline);

}  // namespace pellow
