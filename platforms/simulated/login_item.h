#pragma once

#include <utility>

#include "platform/login_item.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// The login item as the desktop keeps it, whatever becomes of the process.
class LoginItem final : public pellow::LoginItem {
 public:
  explicit LoginItem(System& system) : system_(system) {}

  bool isEnabled() const override { return system_.state.startsAtLogin; }
  std::expected<void, SystemError> setEnabled(bool enabled) override;

  // The user changes it in the system settings.
  void userSets(bool enabled) { system_.state.startsAtLogin = enabled; }
  void failNextChange(SystemError error) { system_.state.loginItemFault = std::move(error); }

 private:
  System& system_;
};

}  // namespace pellow::simulated
