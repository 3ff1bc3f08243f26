#include "ui/launch_at_login.h"

namespace pellow::LaunchAtLogin {

void set(LoginItem& loginItem, const Log& log, bool enabled) {
  const auto changed = loginItem.setEnabled(enabled);
  if (!changed) log.error("Launch at login: {}", changed.error().sentence);
}

}  // namespace pellow::LaunchAtLogin
