#include "platforms/simulated/user_defaults.h"

#include <utility>

namespace pellow::simulated {

std::optional<DefaultsValue> UserDefaults::value(std::string_view key) const {
  if (auto stored = system_.state.defaults.value(key)) return stored;
  const auto found = registered_.find(key);
  return found == registered_.end() ? std::nullopt : std::optional(found->second);
}

std::expected<void, SystemError> UserDefaults::set(std::string_view key, DefaultsValue value,
                                                   Kept kept) {
  if (!system_.portCall("stores {}", key)) return {};
  return system_.state.defaults.write(key, std::move(value), kept, system_.scheduler.now());
}

void UserDefaults::registerDefaults(std::map<std::string, DefaultsValue> values) {
  for (auto& [key, value] : values) registered_.insert_or_assign(key, std::move(value));
}

void UserDefaults::put(std::string_view key, DefaultsValue value) {
  system_.state.defaults.put(key, std::move(value));
}

std::optional<DefaultsValue> UserDefaults::stored(std::string_view key) const {
  return system_.state.defaults.value(key);
}

std::optional<DefaultsValue> UserDefaults::afterCrash(std::string_view key) const {
  return system_.state.defaults.afterCrash(key, system_.scheduler.now());
}

void UserDefaults::failNextWrite(SystemError error, std::optional<std::string> key) {
  system_.state.defaults.failNextWrite(std::move(key), std::move(error));
}

}  // namespace pellow::simulated
