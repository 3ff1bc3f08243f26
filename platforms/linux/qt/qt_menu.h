#pragma once

#include <QMenu>
#include <functional>

#include "platform/menu.h"
#include "platforms/linux/qt/window_hints.h"

namespace pellow {

// How the keys beside the items are written.
enum class MenuKeys {
  asText,       // "Ctrl+Alt+Super+T"
  asShortcuts,  // for a menu that another program shows in its own way
};

// Where a menu shows and what becomes of a choice.
struct MenuSetting {
  QWidget& owner;
  const WindowHints& hints;
  // Gets the action of the chosen item once the menu has gone; not called if the owner has gone by
  // then.
  std::function<void(const std::function<void()>& onChosen)> choose;
  MenuKeys keys = MenuKeys::asText;
};

// Adds the items to `target`. Main thread.
void fillMenu(QMenu& target, const Menu& menu, const MenuSetting& setting);

// Gives the window of the menu the class name "pellow-menu" each time it shows.
void nameWhenShown(QMenu& menu, const WindowHints& hints);

// A QMenu that shows a menu, owned by the owner; it deletes itself once it has been shown and
// hidden. Main thread.
QMenu* makeMenu(const Menu& menu, const MenuSetting& setting);

}  // namespace pellow
