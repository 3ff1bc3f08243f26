#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pellow {

// A key with its modifiers.
struct Accelerator {
  std::string key;                  // as X names it
  std::uint64_t modifierFlags = 0;  // bits of `modifier::all`
};

// As GTK writes it ("<Primary><Alt>t"), openbox ("C-A-t") or Qt ("Ctrl+Alt+T", "Meta+PgUp").
// Nothing for a modifier that the program does not know, and without a key.
std::optional<Accelerator> parseAccelerator(std::string_view text);

}  // namespace pellow
