#pragma once

#import <AppKit/AppKit.h>

#include <functional>

#include "platform/menu.h"

namespace pellow {

// Gets the action of the chosen item, after the menu has closed.
using MenuChoice = std::function<void(const std::function<void()>& onChosen)>;

// Adds the items to `target`, which is empty. Main thread.
void fillMenu(NSMenu* target, const Menu& menu, const MenuChoice& choose);

// An NSMenu that shows a menu. Main thread.
NSMenu* makeMenu(const Menu& menu, const MenuChoice& choose);

}  // namespace pellow
