#pragma once

#include "platform/login_item.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// The login item as the desktop keeps it, whatever becomes of the process.
class LoginItem final : public pellow::LoginItem {
 public:
  explicit LoginItem(System& system) : system_(system) {}

  bool isEnabled() const override { return system_.state.startsAtLogin; }
  std::expected<void, SystemError> setEnabled(bool enabled) override;

 private:
  System& system_;
};

}  // namespace pellow::simulated
