#pragma once

#include <vector>

#include "platforms/linux/accessibility_bus/accessibility_bus.h"

namespace pellow {

// The push buttons that stand together nearest to each side of a title bar, from the side inwards.
//
//     ┌──────────────────────────────────────────────┐
//     │ 0 1   [a] [b]      title       [c]   3 2 1 0 │
//     └──────────────────────────────────────────────┘
//      left                                   right
//
// Where an application has its own buttons there, and no others further out, they are these: their
// number tells.
struct TitleButtons {
  std::vector<AccessibleRect> left;
  std::vector<AccessibleRect> right;
};

// Looks into the window for the uppermost row of buttons, from `top` down to a `height` below it,
// both in the window's own units. Nothing when the application does not answer in time, or has no
// button there, or more things than one would look through.
std::optional<TitleButtons> titleButtons(AccessibilityBus& bus, const AccessibleObject& window,
                                         int top, int height);

}  // namespace pellow
