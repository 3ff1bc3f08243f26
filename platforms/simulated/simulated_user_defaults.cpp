#include "platforms/simulated/simulated_user_defaults.h"

#include <utility>

namespace pellow::simulated {

std::optional<DefaultsValue> SimulatedUserDefaults::value(std::string_view key) const {
  if (auto stored = system_.state.defaults.value(key)) return stored;
  const auto found = registered_.find(key);
  return found == registered_.end() ? std::nullopt : std::optional(found->second);
}

std::expected<void, SystemError> SimulatedUserDefaults::set(std::string_view key,
                                                            DefaultsValue value, Kept kept) {
  if (!system_.portCall("stores {}", key)) return {};
  return system_.state.defaults.write(key, std::move(value), kept, system_.scheduler.now());
}

void SimulatedUserDefaults::registerDefaults(std::map<std::string, DefaultsValue> values) {
  for (auto& [key, value] : values) registered_.insert_or_assign(key, std::move(value));
}

}  // namespace pellow::simulated
