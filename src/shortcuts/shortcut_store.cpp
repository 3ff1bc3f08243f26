#include "shortcuts/shortcut_store.h"

#include <cstddef>
#include <string_view>
#include <utility>

#include "base/json.h"

namespace pellow {
namespace {

constexpr std::string_view key = "shortcuts";

// Key code 0 is the key of A. With other characters the record is empty or damaged and must not
// replace a default.
bool isDamaged(const Shortcut& shortcut) {
  return shortcut.keyCode == 0 && shortcut.characters != "a";
}

}  // namespace

ShortcutStore::ShortcutStore(UserDefaults& defaults, NotificationCenter& notifications)
    : defaults_(defaults), notifications_(notifications) {
  load();
}

const Shortcut& ShortcutStore::shortcut(ShortcutAction action) const {
  return bindings_[static_cast<std::size_t>(std::to_underlying(action))];
}

bool ShortcutStore::isCustom(ShortcutAction action) const {
  return overrides_.contains(rawValue(action));
}

void ShortcutStore::set(ShortcutAction action, Shortcut shortcut) {
  overrides_.insert_or_assign(std::string(rawValue(action)), std::move(shortcut));
  save();
}

void ShortcutStore::restoreDefault(ShortcutAction action) {
  overrides_.erase(std::string(rawValue(action)));
  save();
}

void ShortcutStore::replaceOverrides(Overrides overrides) {
  overrides_ = std::move(overrides);
  save();
}

void ShortcutStore::load() {
  const auto bytes = data(defaults_, key);
  if (auto stored = bytes ? decodeJSON<Overrides>(*bytes) : std::nullopt)
    overrides_ = std::move(*stored);
  std::erase_if(overrides_, [](const auto& entry) { return isDamaged(entry.second); });
  refreshBindings();
}

void ShortcutStore::save() {
  refreshBindings();
  if (auto encoded = encodeJSON(overrides_)) defaults_.set(key, DefaultsData{std::move(*encoded)});
  notifications_.post(didChange);
}

void ShortcutStore::refreshBindings() {
  for (const auto action : allCases<ShortcutAction>()) {
    const auto custom = overrides_.find(rawValue(action));
    bindings_[static_cast<std::size_t>(std::to_underlying(action))] =
        custom == overrides_.end() ? defaultShortcut(action) : custom->second;
  }
}

}  // namespace pellow
