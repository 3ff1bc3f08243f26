#pragma once

#include <vector>

#include "platforms/linux/accessibility_bus/accessibility_bus.h"

namespace pellow {

// The group of push buttons nearest to each side of a title bar, from the side inwards.
//
//     ┌──────────────────────────────────────────────┐
//     │ 0 1   [a] [b]      title       [c]   3 2 1 0 │
//     └──────────────────────────────────────────────┘
//      left                                   right
//
// If an application puts its own buttons there, with none further out, they are these: their number
// tells.
struct TitleButtons {
  std::vector<AccessibleRect> left;
  std::vector<AccessibleRect> right;
};

// Finds the top row of buttons in the window, from `top` down to a `height` below it, both in the
// window's own units. Nothing when the application does not answer in time, has no button there, or
// has too much to look through.
std::optional<TitleButtons> titleButtons(AccessibilityBus& bus, const AccessibleObject& window,
                                         int top, int height);

}  // namespace pellow
