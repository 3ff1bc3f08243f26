#pragma once

#include <string_view>
#include <vector>

#include "platforms/linux/x11/desktop_shortcut.h"

// What desktops write down of their shortcuts. What cannot be understood is left out, and so
// is what has no modifier; of one that is written twice the first counts.

namespace pellow {

// `gsettings list-recursively` of GNOME, MATE, Cinnamon and their like; what is called "name" there
// names the shortcuts that are called "binding".
std::vector<DesktopShortcut> shortcutsOfGSettings(std::string_view listing);

// xfce4-keyboard-shortcuts.xml of one user or of all. `isWhole` is set if nobody else's counts
// beside it.
struct XfceShortcuts {
  std::vector<DesktopShortcut> shortcuts;
  bool isWhole = false;
};
XfceShortcuts shortcutsOfXfce(std::string_view xml);

// rc.xml of openbox.
std::vector<DesktopShortcut> shortcutsOfOpenbox(std::string_view xml);

// kglobalshortcutsrc of KDE.
std::vector<DesktopShortcut> shortcutsOfKDE(std::string_view ini);

}  // namespace pellow
