#include "platforms/linux/x11/window_manager_traits.h"

#include <algorithm>
#include <array>

namespace pellow {
namespace {

// These and what was made of them; "Mutter (Muffin)" is one of those.
constexpr std::array descendantsOfMetacity = {"Metacity", "Mutter", "GNOME Shell", "Muffin",
                                              "Marco"};

}  // namespace

WindowManagerTraits traitsOf(std::string_view name, bool composites) {
  const bool paintsByItsOwnBook =
      composites && std::ranges::any_of(descendantsOfMetacity, [&](std::string_view known) {
        return name.find(known) != name.npos;
      });
  return {.keepsWindowsOnMonitors = paintsByItsOwnBook};
}

}  // namespace pellow
