#include "shortcuts/system_shortcuts.h"

#include <array>
#include <cstdint>

#include "base/unicode.h"

namespace pellow::SystemShortcuts {
namespace {

struct Feature {
  std::string_view identifier;
  std::string_view name;
};

constexpr auto features = std::to_array<Feature>({
    {"28", "Screenshots"},
    {"29", "Screenshots"},
    {"30", "Screenshots"},
    {"31", "Screenshots"},
    {"32", "Mission Control"},
    {"33", "Mission Control"},
    {"34", "Mission Control"},
    {"35", "Mission Control"},
    {"36", "Application windows"},
    {"37", "Application windows"},
    {"60", "Input source switching"},
    {"61", "Input source switching"},
    {"64", "Spotlight"},
    {"65", "Spotlight"},
    {"79", "Switching Spaces"},
    {"80", "Switching Spaces"},
    {"81", "Switching Spaces"},
    {"82", "Switching Spaces"},
    {"175", "Do Not Disturb"},
    {"222", "Dictionary lookup"},
});

// The key code, the second parameter, does not matter: the system goes by the character.
bool owns(const SymbolicHotKey& hotKey, char32_t character, std::uint64_t modifiers) {
  if (!hotKey.enabled || hotKey.parameters.size() < 3) return false;
  const auto flags = hotKey.parameters[2];
  return hotKey.parameters[0] == static_cast<std::int64_t>(character) && flags >= 0 &&
         static_cast<std::uint64_t>(flags) == modifiers;
}

std::string_view nameOf(std::string_view symbolicHotKey, const Texts& texts) {
  for (const auto& feature : features)
    if (feature.identifier == symbolicHotKey) return feature.name;
  return texts.systemShortcut;
}

std::optional<std::string> listedOwner(const SymbolicHotKeys& hotKeys, const Shortcut& shortcut,
                                       const Texts& texts) {
  const auto character = firstScalar(shortcut.characters);
  if (!character) return std::nullopt;
  for (const auto& hotKey : hotKeys.all())
    if (owns(hotKey, *character, shortcut.modifiers))
      return std::string(nameOf(hotKey.identifier, texts));
  return std::nullopt;
}

}  // namespace

std::optional<std::string> conflictDescription(const SymbolicHotKeys& hotKeys,
                                               const Shortcut& shortcut, const Texts& texts) {
  if (auto owner = listedOwner(hotKeys, shortcut, texts)) return owner;
  auto owner = hotKeys.reservedBy(shortcut.keyCode, shortcut.modifiers);
  return owner == "" ? std::string(texts.systemShortcut) : owner;
}

}  // namespace pellow::SystemShortcuts
