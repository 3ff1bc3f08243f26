#pragma once

#include <vector>

#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// The windows of one application. Any thread.

// Those of its windows that the window manager lists.
std::vector<xcb_window_t> windowsOf(X11Server& server, ProcessID pid, Deadline deadline);
std::vector<WindowFacts> lookAtWindowsOf(X11Server& server, ProcessID pid, Facet facets,
                                         Deadline deadline);

// Whether a window has its place in a taskbar.
inline constexpr Facet taskbarFacets = Facet::kind | Facet::state;
bool isInTaskbar(const WindowFacts& window);

// Whether it is there for the user, on whatever desktop; of the facets `kind` and `state`.
bool isOut(X11Server& server, const WindowFacts& window, Deadline deadline);

}  // namespace pellow
