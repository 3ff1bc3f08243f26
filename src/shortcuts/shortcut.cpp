#include "shortcuts/shortcut.h"

#include "base/json.h"
#include "base/unicode.h"
#include "platform/event_monitors.h"

namespace pellow {

std::string Shortcut::display(const Texts& texts) const {
  std::string text;
  const auto add = [&](std::uint64_t key, const Text& name) {
    if (modifiers & key) text.append(name).append(texts.betweenKeys);
  };
  add(modifier::control, texts.control);
  add(modifier::option, texts.option);
  add(modifier::shift, texts.shift);
  add(modifier::command, texts.command);
  return text + upperCased(characters);
}

void to_json(nlohmann::json& json, const Shortcut& shortcut) {
  json = {{"keyCode", shortcut.keyCode},
          {"characters", shortcut.characters},
          {"modifiers", shortcut.modifiers}};
}

void from_json(const nlohmann::json& json, Shortcut& shortcut) {
  shortcut = {.keyCode = readMember<std::uint16_t>(json, "keyCode"),
              .characters = readMember<std::string>(json, "characters"),
              .modifiers = readMember<std::uint64_t>(json, "modifiers")};
}

}  // namespace pellow
