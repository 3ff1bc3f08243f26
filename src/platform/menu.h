#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/paint.h"

namespace pellow {

struct MenuItem;

// A menu as data. A platform shows it as it stands at that moment.
struct Menu {
  std::vector<MenuItem> items;
};

// The key shown beside an item.
struct KeyEquivalent {
  std::string characters;       // "t"; empty: none
  std::uint64_t modifiers = 0;  // bits of `modifier::all`

  bool operator==(const KeyEquivalent&) const = default;
};

// A system symbol in the colour of the menu's text.
struct MenuSymbol {
  std::string name;

  bool operator==(const MenuSymbol&) const = default;
};

// A small rounded patch of a colour.
struct MenuSwatch {
  Paint paint;

  bool operator==(const MenuSwatch&) const = default;
};

// A small picture beside an item.
using MenuImage = std::variant<std::monostate, MenuSymbol, MenuSwatch>;

struct MenuItem {
  std::string title;
  bool isSeparator = false;  // a line; all else is ignored
  bool isEnabled = true;
  bool isChecked = false;
  std::string tooltip;
  MenuImage image;
  KeyEquivalent key;
  std::function<void()> onChosen;  // absent: a heading, or the head of a submenu
  std::optional<Menu> submenu;
};

}  // namespace pellow
