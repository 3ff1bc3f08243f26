#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/menu.h"

namespace pellow::simulated {

class System;

// The menu that is open, as data. There is one at most, as there is one user. Items are named by a
// path of titles: {"Size", "40 pt"}.
class OpenMenu {
 public:
  explicit OpenMenu(System& system) : system_(system) {}

  // A menu without items does not open.
  void open(Menu menu);
  void close() { open_ = std::nullopt; }
  bool isOpen() const;

  // Throw when no menu is open or it has no such item. An empty path means the menu itself.
  const Menu& menu(std::span<const std::string_view> path) const;
  const MenuItem& item(std::span<const std::string_view> path) const;

  // Closes the menu and tells the item. Throws when the item, or one on the way to it, is disabled,
  // or has nothing to be chosen for.
  void choose(std::span<const std::string_view> path);

 private:
  System& system_;
  std::optional<Menu> open_;
};

// One line an item, as a user reads them: "✓ 40 pt", "Size ▸", "Gather (disabled)", "—".
std::vector<std::string> linesOf(const Menu& menu);

}  // namespace pellow::simulated
