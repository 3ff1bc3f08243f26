#pragma once

#include <QMenu>
#include <functional>

#include "platform/menu.h"
#include "platforms/linux/qt/window_hints.h"

namespace pellow {

// A QMenu that shows a menu, owned by `owner`; it deletes itself once it has been shown and hidden.
// What an item does goes to `choose` when the item is chosen, after the menu has gone; nothing of
// it comes when the owner has gone by then. Main thread.
QMenu* makeMenu(const Menu& menu, QWidget& owner, const WindowHints& hints,
                const std::function<void(const std::function<void()>& onChosen)>& choose);

}  // namespace pellow
