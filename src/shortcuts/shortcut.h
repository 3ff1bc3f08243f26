#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "base/texts.h"

namespace pellow {

// A key combination.
struct Shortcut {
  std::uint16_t keyCode = 0;    // virtual key code
  std::string characters;       // of the key without modifiers, lower case
  std::uint64_t modifiers = 0;  // bits of `modifier::all`

  bool operator==(const Shortcut&) const = default;

  // As menus and buttons show it: "⌃⌥⇧⌘T" on a Mac.
  std::string display(const Texts& texts) const;
};

// The stored form; reading throws when the value is not a shortcut.
void to_json(nlohmann::json& json, const Shortcut& shortcut);
void from_json(const nlohmann::json& json, Shortcut& shortcut);

}  // namespace pellow
