#pragma once

#include <vector>

#include "platforms/linux/x11/x11_window.h"

namespace pellow {

struct WindowOfOwner {
  WindowFacts window;
  ProcessID owner = 0;  // 0: nobody knows
};

// The managed windows of the current desktop that are not iconified, front to back, beyond the
// monitors too; with their state and these facets. Any thread.
std::vector<WindowOfOwner> windowsOnScreen(X11Server& server, Facet facets, Deadline deadline);

}  // namespace pellow
