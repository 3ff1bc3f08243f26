#pragma once

#include <optional>
#include <string>

#include "base/texts.h"
#include "platform/symbolic_hot_keys.h"
#include "shortcuts/shortcut.h"

// The keyboard shortcuts of the system itself.
namespace pellow::SystemShortcuts {

// The name of the system feature that owns the same character with the same modifiers, if any, to
// stand within a sentence: "Spotlight", "a macOS shortcut" where only that is known of it.
std::optional<std::string> conflictDescription(const SymbolicHotKeys& hotKeys,
                                               const Shortcut& shortcut, const Texts& texts);

}  // namespace pellow::SystemShortcuts
