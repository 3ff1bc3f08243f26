#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pellow {

// One of the system's own keyboard shortcuts.
struct SymbolicHotKey {
  std::string identifier;  // a decimal number: "64"
  bool enabled = false;    // false unless it is stored as true
  // Character, key code, modifier flags, and perhaps more; empty unless all are whole numbers.
  std::vector<std::int64_t> parameters;

  bool operator==(const SymbolicHotKey&) const = default;
};

// The shortcuts of the system itself. Main thread.
class SymbolicHotKeys {
 public:
  virtual ~SymbolicHotKeys() = default;

  // "AppleSymbolicHotKeys" of the domain "com.apple.symbolichotkeys", as they are now, in the
  // system's order; entries that are not dictionaries are left out. Empty when the system has none
  // or they cannot be read.
  virtual std::vector<SymbolicHotKey> all() const = 0;

  // The feature of the desktop that acts on this virtual key code with these flags, by one of its
  // shortcuts that `all` does not know: its name, within a sentence, or an empty text when only
  // that there is one is known. Nothing where nobody acts on it, or that cannot be found out.
  virtual std::optional<std::string> reservedBy(std::uint16_t keyCode,
                                                std::uint64_t modifierFlags) const = 0;
};

}  // namespace pellow
