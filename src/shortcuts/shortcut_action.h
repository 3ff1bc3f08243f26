#pragma once

#include <string_view>

#include "base/raw_value.h"
#include "shortcuts/shortcut.h"

namespace pellow {

// What a global shortcut can do, in the order they are listed and tried.
enum class ShortcutAction {
  pellowFrontmost,
  toggleFloatAbove,
  pellowPinned,
  pellowAll,
  focusMode,
  restoreAll,
};

// Also the keys of the store and of the settings file.
template <>
struct RawValues<ShortcutAction> {
  static constexpr std::array<std::string_view, 6> texts{"pellowFrontmost", "toggleFloatAbove",
                                                         "pellowPinned",    "pellowAll",
                                                         "focusMode",       "restoreAll"};
};

// The label in the shortcuts pane: "Pellow frontmost window".
std::string_view title(ShortcutAction action);

// Control, Option and Command with a letter.
Shortcut defaultShortcut(ShortcutAction action);

}  // namespace pellow
