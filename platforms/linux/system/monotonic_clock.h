#pragma once

#include "platform/clock.h"

namespace pellow {

// CLOCK_MONOTONIC: seconds since the machine was started.
class MonotonicClock final : public Clock {
 public:
  Seconds now() const override;
  void sleep(Seconds duration) override;
};

}  // namespace pellow
