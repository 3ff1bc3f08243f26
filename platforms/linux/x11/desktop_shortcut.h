#pragma once

#include <cstdint>
#include <string>

namespace pellow {

// A shortcut of the desktop, as its settings have it.
struct DesktopShortcut {
  std::string key;                  // as X names it, in any case: "t", "F1", "Page_Up"
  std::uint64_t modifierFlags = 0;  // bits of `modifier::all`
  std::string feature;              // for people, within a sentence; may be empty

  bool operator==(const DesktopShortcut&) const = default;
};

}  // namespace pellow
