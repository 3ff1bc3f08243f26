#include "platforms/linux/x11/x11_symbolic_hot_keys.h"

#include <algorithm>

namespace pellow {

std::optional<std::string> X11SymbolicHotKeys::reservedBy(std::uint16_t keyCode,
                                                          std::uint64_t modifierFlags) const {
  if (!isReserved(keyCode, modifierFlags)) return std::nullopt;
  return feature(keyCode, modifierFlags);
}

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

// A long one says nothing to people.
std::string X11SymbolicHotKeys::feature(std::uint16_t keyCode, std::uint64_t modifierFlags) const {
  constexpr std::size_t longest = 80;  // bytes
  const auto map = keyboard_.map();
  for (const auto& shortcut : settings_())
    if (shortcut.modifierFlags == modifierFlags && map->types(keyCode, shortcut.key))
      return shortcut.feature.size() <= longest ? shortcut.feature : "";
  return {};
}

}  // namespace pellow
