#pragma once

#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/subscription.h"
#include "platform/menu.h"

namespace pellow::simulated {

class System;

// The menu that is open. There is one at most, as there is one user. Items are named by a path of
// titles: `choose({"Size", "40 pt"})`.
class OpenMenu {
 public:
  using Path = std::initializer_list<std::string_view>;

  explicit OpenMenu(System& system) : system_(system) {}

  // A menu without items does not open. Dropping the answer closes the menu. `whileOpen` is dropped
  // once it has closed and the chosen item has been told.
  Subscription open(Menu menu, Subscription whileOpen = {});
  void close() { open_ = nullptr; }
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
  struct Open {
    Menu menu;
    Subscription whileOpen;
  };

  const Menu& menuAt(Steps path) const;
  const MenuItem& itemAt(Steps path) const;

  System& system_;
  std::shared_ptr<Open> open_;
};

}  // namespace pellow::simulated
