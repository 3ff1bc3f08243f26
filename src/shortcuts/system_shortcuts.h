#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/symbolic_hot_keys.h"
#include "shortcuts/shortcut.h"

// The keyboard shortcuts of the system itself.
namespace pellow::SystemShortcuts {

// The name of the system feature that owns the same character with the same modifiers, if any; "a
// desktop shortcut" where only that is known of it.
std::optional<std::string> conflictDescription(const SymbolicHotKeys& hotKeys,
                                               const Shortcut& shortcut);

// The name of a feature by its identifier, to stand within a sentence: "Spotlight", "a macOS
// shortcut".
std::string_view name(std::string_view symbolicHotKey);

}  // namespace pellow::SystemShortcuts
