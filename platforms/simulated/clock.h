#pragma once

#include "platform/clock.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// Virtual time.
class Clock final : public pellow::Clock {
 public:
  explicit Clock(System& system) : system_(system) {}

  Seconds now() const override { return system_.scheduler.now(); }

  void sleep(Seconds duration) override {
    system_.portCall("sleep {} s", duration);
    system_.scheduler.sleep(duration);
  }

 private:
  System& system_;
};

}  // namespace pellow::simulated
