#pragma once

#include <string_view>

namespace pellow {

// How a window manager makes the buttons of title bars.
enum class TitleBarKind { unknown, openbox, xfwm4, icewm, fluxbox, marco, metacity, kwin };

// What must be known of a window manager beforehand, because it does not show. Here, and nowhere
// else, they have names.
struct WindowManagerTraits {
  std::string_view name;  // what it calls itself begins with this
  TitleBarKind titleBar = TitleBarKind::unknown;
  // While it composites, it lets no window leave the monitors. Most can be outwitted by moving the
  // frame past them, but this one paints the frame where it believes it to be.
  bool paintsByItsOwnBook = false;
  // While it composites, it draws decoration where it composes the screen, and leaves the frames'
  // windows empty.
  bool drawsDecorationLate = false;
  // The frame of a window that is minimized or comes back shrinks and grows for a moment, on the
  // way between its place and the taskbar.
  bool framesFly = false;
  // A dock becomes a bar as wide as the monitor.
  bool stretchesDocks = false;
  // A window that is asked to move, and not to keep its size, grows by its title bar.
  bool growsOnMoves = false;
};

// `name` is what the window manager calls itself.
const WindowManagerTraits& traitsOf(std::string_view name);

}  // namespace pellow
