#pragma once

#include <map>
#include <string>

#include "platform/user_defaults.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// The user defaults of the desktop as one process sees them.
class UserDefaults final : public pellow::UserDefaults {
 public:
  explicit UserDefaults(System& system) : system_(system) {}

  std::optional<DefaultsValue> value(std::string_view key) const override;
  std::expected<void, SystemError> set(std::string_view key, DefaultsValue value,
                                       Durability durability = Durability::eventual) override;
  void registerDefaults(std::map<std::string, DefaultsValue> values) override;

 private:
  System& system_;
  std::map<std::string, DefaultsValue, std::less<>> registered_;
};

}  // namespace pellow::simulated
