#include "platforms/simulated/user_defaults.h"

#include <utility>

namespace pellow::simulated {

std::optional<DefaultsValue> UserDefaults::value(std::string_view key) const {
  if (auto stored = system_.state.defaults.value(key)) return stored;
  const auto found = registered_.find(key);
  return found == registered_.end() ? std::nullopt : std::optional(found->second);
}

std::expected<void, SystemError> UserDefaults::set(std::string_view key, DefaultsValue value,
                                                   Durability durability) {
  if (!system_.portCall("stores {}", key)) return {};
  return system_.state.defaults.write(key, std::move(value), durability, system_.scheduler.now());
}

void UserDefaults::registerDefaults(std::map<std::string, DefaultsValue> values) {
  for (auto& [key, value] : values) registered_.insert_or_assign(key, std::move(value));
}

}  // namespace pellow::simulated
