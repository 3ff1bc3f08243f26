#pragma once

#include <vector>

#include "platforms/linux/x11/foreground.h"

namespace pellow {

// The windows of one application. Any thread.

// Those of its windows that the window manager lists.
std::vector<xcb_window_t> windowsOf(X11Server& server, ProcessID pid, Deadline deadline);

// Gives the keys to the window of the application that was raised last, else to its topmost one, on
// the current desktop if it has one there. False when it has no window at all.
bool activateApplication(X11Server& server, Foreground& foreground, ProcessID pid,
                         Deadline deadline);

// Whether the application is hidden: some of its windows are iconified for that, or it had none to
// iconify and shows none yet.
bool isApplicationHidden(X11Server& server, ProcessID pid, Deadline deadline);

}  // namespace pellow
