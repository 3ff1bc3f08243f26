#pragma once

#import <Foundation/Foundation.h>

#include <functional>

#include "platform/clock.h"

namespace pellow {

// The timer by which the highlights of a panel's views fade in and out. Main thread.
class Highlights {
 public:
  // `advance` is told how much time has passed, and answers whether there is more to do.
  explicit Highlights(std::function<bool(Seconds elapsed)> advance);
  Highlights(const Highlights&) = delete;
  Highlights& operator=(const Highlights&) = delete;
  ~Highlights();

  void begin();
  void end();

 private:
  void tick();

  std::function<bool(Seconds elapsed)> advance_;
  NSTimer* timer_ = nil;           // nil while nothing changes
  NSTimeInterval latestStep_ = 0;  // of the system's uptime
};

}  // namespace pellow
