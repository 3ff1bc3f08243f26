#pragma once

#include <vector>

#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// The processes that own the windows, in the same order; 0 for a window that has been gone for a
// while. The X server knows the process at the other end of a local connection; failing that a
// window of this machine may name its own. What remains, such as a program on another machine, gets
// a negative number of its connection's own.
std::vector<ProcessID> owningProcesses(X11Server& server, const std::vector<xcb_window_t>& windows,
                                       Deadline deadline);

// Whether a process, or the X client behind a negative number, may still be alive: unknowable for
// the latter, which counts as ended with its last window.
bool isAlive(ProcessID pid);

}  // namespace pellow
