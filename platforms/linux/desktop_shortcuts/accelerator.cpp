#include "platforms/linux/desktop_shortcuts/accelerator.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "platform/event_monitors.h"

namespace pellow {
namespace {

struct ModifierName {
  std::string_view name;
  std::uint64_t flag;
};

constexpr std::array modifierNames{
    ModifierName{"C", modifier::control},       ModifierName{"Ctrl", modifier::control},
    ModifierName{"Ctl", modifier::control},     ModifierName{"Control", modifier::control},
    ModifierName{"Primary", modifier::control}, ModifierName{"A", modifier::option},
    ModifierName{"Alt", modifier::option},      ModifierName{"Mod1", modifier::option},
    ModifierName{"S", modifier::shift},         ModifierName{"Shift", modifier::shift},
    ModifierName{"W", modifier::command},       ModifierName{"Super", modifier::command},
    ModifierName{"Meta", modifier::command},    ModifierName{"Mod4", modifier::command},
};

struct KeyName {
  std::string_view qt;
  std::string_view x;
};

constexpr std::array keyNames{
    KeyName{"PgUp", "Prior"}, KeyName{"PgDown", "Next"}, KeyName{"Esc", "Escape"},
    KeyName{"Del", "Delete"}, KeyName{"Ins", "Insert"},
};

bool isSameWord(std::string_view a, std::string_view b) {
  return std::ranges::equal(
      a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

std::string keyName(std::string_view text) {
  const auto found = std::ranges::find_if(
      keyNames, [&](const KeyName& each) { return isSameWord(each.qt, text); });
  return std::string(found == keyNames.end() ? text : found->x);
}

// The next modifier, taken from the text; nothing when only the key is left. A sign that separates
// may be the key itself.
std::optional<std::string_view> takeModifier(std::string_view& text) {
  const bool isBracketed = text.starts_with('<');
  const auto end = isBracketed ? text.find('>') : text.find_first_of("+-", 1);
  if (end == std::string_view::npos || (!isBracketed && end + 1 == text.size()))
    return std::nullopt;
  const auto modifier = text.substr(isBracketed, end - isBracketed);
  text.remove_prefix(end + 1);
  return modifier;
}

}  // namespace

std::optional<Accelerator> parseAccelerator(std::string_view text) {
  Accelerator accelerator;
  while (const auto name = takeModifier(text)) {
    const auto found = std::ranges::find_if(
        modifierNames, [&](const ModifierName& each) { return isSameWord(each.name, *name); });
    if (found == modifierNames.end()) return std::nullopt;
    accelerator.modifierFlags |= found->flag;
  }
  if (text.empty()) return std::nullopt;
  accelerator.key = keyName(text);
  return accelerator;
}

}  // namespace pellow
