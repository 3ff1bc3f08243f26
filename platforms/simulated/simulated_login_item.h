#pragma once

#include "platform/login_item.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

// The login item as the desktop keeps it, whatever becomes of the process.
class SimulatedLoginItem final : public LoginItem {
 public:
  explicit SimulatedLoginItem(SimulatedSystem& system) : system_(system) {}

  bool isEnabled() const override { return system_.state.startsAtLogin; }
  std::expected<void, SystemError> setEnabled(bool enabled) override;

 private:
  SimulatedSystem& system_;
};

}  // namespace pellow::simulated
