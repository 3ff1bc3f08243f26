#pragma once

#include "platform/clock.h"

namespace pellow {

// Seconds since the machine was started, without those it slept: the clock of dispatch's timers.
class MacClock final : public Clock {
 public:
  Seconds now() const override;
  void sleep(Seconds duration) override;
};

}  // namespace pellow
