#pragma once

#include <string_view>
#include <vector>

#include "platforms/linux/x11/desktop_shortcut.h"

namespace pellow {

// The shortcuts of the desktop that runs, by XDG_CURRENT_DESKTOP and the name of the window
// manager, as far as their settings can be read within a second; read anew each time.
std::vector<DesktopShortcut> desktopShortcuts(std::string_view windowManager);

}  // namespace pellow
