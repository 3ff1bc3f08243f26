#pragma once

#include <vector>

#include "platforms/linux/x11/foreground.h"

namespace pellow {

// Has windows iconified and brought back. A shaded window leaves that state and takes it up again
// when it comes back. Any thread.
class Iconifier {
 public:
  Iconifier(X11Server& server, WindowStates& states, Foreground& foreground)
      : server_(server), states_(states), foreground_(foreground) {}

  // `cannotComplete` when the window manager does not do it.
  std::expected<void, AXError> minimize(const WindowKey& window, Deadline deadline);
  // Brings the window to the current desktop, too.
  std::expected<void, AXError> unminimize(const WindowKey& window, Deadline deadline);

  // The same for many at once, whoever they are hidden for; false when one of them does not follow.
  // Windows that are gone do not count.
  bool iconify(const std::vector<WindowKey>& windows, Deadline deadline);
  bool deiconify(const std::vector<WindowKey>& windows, Deadline deadline);

 private:
  bool waitForIconified(const WindowKey& window, bool iconified, Seconds patience,
                        Deadline deadline);

  X11Server& server_;
  WindowStates& states_;
  Foreground& foreground_;
};

}  // namespace pellow
