#pragma once

#include "platform/user_defaults.h"

namespace pellow {

// The standard user defaults of the application. The system keeps what is stored eventually at a
// moment of its choice, and writes what is stored at once to its preferences server.
class MacUserDefaults final : public UserDefaults {
 public:
  std::optional<DefaultsValue> value(std::string_view key) const override;
  std::expected<void, SystemError> set(std::string_view key, DefaultsValue value,
                                       Kept kept) override;
  void registerDefaults(std::map<std::string, DefaultsValue> values) override;
};

}  // namespace pellow
