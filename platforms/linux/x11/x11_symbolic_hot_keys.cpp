#include "platforms/linux/x11/x11_symbolic_hot_keys.h"

#include <algorithm>

namespace pellow {

// To X, Num Lock is a modifier like any other, and on many keyboards it is always on. So is Caps
// Lock, but mutter reserves combinations with it that it does not mean.
bool X11SymbolicHotKeys::isReserved(std::uint16_t keyCode, std::uint64_t modifierFlags) const {
  const auto map = keyboard_.map();
  const unsigned plain = map->xModifiers(modifierFlags);
  const std::vector<unsigned> modifiers{plain, plain | map->numLock()};
  return std::ranges::any_of(map->xKeycodes(keyCode), [&](std::uint8_t keycode) {
    return grabs_.isReserved(keycode, modifiers);
  });
}

}  // namespace pellow
