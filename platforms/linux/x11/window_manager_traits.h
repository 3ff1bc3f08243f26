#pragma once

#include <string_view>

namespace pellow {

// What must be known of a window manager beforehand, because it does not show. Here, and nowhere
// else, they have names.
struct WindowManagerTraits {
  // It lets no window leave the monitors. Most can be outwitted by moving the frame past them, but
  // this one paints the frame where it believes it to be.
  bool keepsWindowsOnMonitors = false;
};

// `name` is what it calls itself. `composites`: it paints the screen itself.
WindowManagerTraits traitsOf(std::string_view name, bool composites);

}  // namespace pellow
