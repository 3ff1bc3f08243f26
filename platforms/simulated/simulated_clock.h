#pragma once

#include "platform/clock.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

// Virtual time.
class SimulatedClock final : public Clock {
 public:
  explicit SimulatedClock(SimulatedSystem& system) : system_(system) {}

  Seconds now() const override { return system_.scheduler.now(); }

  void sleep(Seconds duration) override {
    system_.portCall("sleep {} s", duration);
    system_.scheduler.sleep(duration);
  }

 private:
  SimulatedSystem& system_;
};

}  // namespace pellow::simulated
