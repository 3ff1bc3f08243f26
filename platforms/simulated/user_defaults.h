#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/user_defaults.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// The user defaults of the desktop as one process sees them.
class UserDefaults final : public pellow::UserDefaults {
 public:
  explicit UserDefaults(System& system) : system_(system) {}

  std::optional<DefaultsValue> value(std::string_view key) const override;
  std::expected<void, SystemError> set(std::string_view key, DefaultsValue value,
                                       Kept kept = Kept::eventually) override;
  void registerDefaults(std::map<std::string, DefaultsValue> values) override;

  // Somebody else writes; no crash loses it.
  void put(std::string_view key, DefaultsValue value);
  // What was written, and what a crash at this moment would leave of it.
  std::optional<DefaultsValue> stored(std::string_view key) const;
  std::optional<DefaultsValue> afterCrash(std::string_view key) const;
  // The next write to be kept at once, of this key or of any, answers with the error and is lost in
  // a crash.
  void failNextWrite(SystemError error, std::optional<std::string> key = std::nullopt);

 private:
  System& system_;
  std::map<std::string, DefaultsValue, std::less<>> registered_;
};

}  // namespace pellow::simulated
