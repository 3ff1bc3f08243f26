#pragma once

#include "platform/screen_capture.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

class SimulatedScreenCapture final : public ScreenCapture {
 public:
  explicit SimulatedScreenCapture(SimulatedSystem& system) : system_(system) {}

  bool preflightAccess() const override { return system_.state.allowsCapture; }

 private:
  SimulatedSystem& system_;
};

}  // namespace pellow::simulated
