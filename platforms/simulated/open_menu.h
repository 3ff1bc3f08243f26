#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/menu.h"

namespace pellow::simulated {

class System;

// The menu that is open. There is one at most, as there is one user. Items are named by a path of
// titles: `choose({"Size", "40 pt"})`.
class OpenMenu {
 public:
  using Path = std::initializer_list<std::string_view>;

  explicit OpenMenu(System& system) : system_(system) {}

  // A menu without items does not open.
  void open(Menu menu);
  void close() { open_ = std::nullopt; }
  bool isOpen() const;

  // These throw when no menu is open or it has no such item.

  // One line an item, as a user reads them: "✓ 40 pt", "Size ▸", "Gather (disabled)", "—"; of the
  // menu itself, or of a submenu.
  std::vector<std::string> lines(Path path = {}) const;
  const MenuItem& item(Path path) const { return itemAt(path); }
  // Closes the menu and tells the item. Throws when the item, or one on the way to it, is disabled,
  // or choosing it does nothing.
  void choose(Path path);

 private:
  using Steps = std::span<const std::string_view>;

  const Menu& menuAt(Steps path) const;
  const MenuItem& itemAt(Steps path) const;

  System& system_;
  std::optional<Menu> open_;
};

}  // namespace pellow::simulated
