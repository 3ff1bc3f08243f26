#pragma once

#include <cstdint>
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

// "AppleSymbolicHotKeys" of the domain "com.apple.symbolichotkeys". Main thread.
class SymbolicHotKeys {
 public:
  virtual ~SymbolicHotKeys() = default;

  // As they are now, in the system's order; entries that are not dictionaries are left out. Empty
  // when the system has none or they cannot be read.
  virtual std::vector<SymbolicHotKey> all() const = 0;
};

}  // namespace pellow
