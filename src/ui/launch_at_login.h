#pragma once

#include "base/log.h"
#include "platform/login_item.h"

namespace pellow::LaunchAtLogin {

// Has the system start the program at login, or no longer. A failure is only logged. Main thread.
void set(LoginItem& loginItem, const Log& log, bool enabled);

}  // namespace pellow::LaunchAtLogin
