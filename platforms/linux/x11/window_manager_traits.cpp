#include "platforms/linux/x11/window_manager_traits.h"

#include <algorithm>
#include <array>

namespace pellow {
namespace {

// The first that fits counts; the last one stands for those that are not known. metacity has
// descendants under many names, which paint alike.
constexpr std::array known{
    WindowManagerTraits{.name = "Openbox", .titleBar = TitleBarKind::openbox, .framesFly = true},
    WindowManagerTraits{.name = "Xfwm4", .titleBar = TitleBarKind::xfwm4},
    WindowManagerTraits{.name = "IceWM", .titleBar = TitleBarKind::icewm},
    WindowManagerTraits{.name = "Fluxbox", .titleBar = TitleBarKind::fluxbox, .growsOnMoves = true},
    WindowManagerTraits{
        .name = "KWin", .titleBar = TitleBarKind::kwin, .drawsDecorationLate = true},
    WindowManagerTraits{
        .name = "Metacity (Marco)", .titleBar = TitleBarKind::marco, .paintsByItsOwnBook = true},
    WindowManagerTraits{
        .name = "Marco", .titleBar = TitleBarKind::marco, .paintsByItsOwnBook = true},
    WindowManagerTraits{
        .name = "Metacity", .titleBar = TitleBarKind::metacity, .paintsByItsOwnBook = true},
    WindowManagerTraits{
        .name = "Mutter", .titleBar = TitleBarKind::metacity, .paintsByItsOwnBook = true},
    WindowManagerTraits{
        .name = "GNOME Shell", .titleBar = TitleBarKind::metacity, .paintsByItsOwnBook = true},
    WindowManagerTraits{.name = "Muffin", .paintsByItsOwnBook = true},
    WindowManagerTraits{.name = "i3", .stretchesDocks = true},
    WindowManagerTraits{},
};

}  // namespace

const WindowManagerTraits& traitsOf(std::string_view name) {
  return *std::ranges::find_if(
      known, [&](const WindowManagerTraits& traits) { return name.starts_with(traits.name); });
}

}  // namespace pellow
