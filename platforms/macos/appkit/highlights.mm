#include "platforms/macos/appkit/highlights.h"

#include <utility>

namespace pellow {
namespace {

constexpr double frameInterval = 1.0 / 60;  // seconds

}  // namespace

Highlights::Highlights(std::function<bool(Seconds)> advance) : advance_(std::move(advance)) {}

Highlights::~Highlights() { end(); }

void Highlights::begin() {
  if (timer_) return;
  latestStep_ = NSProcessInfo.processInfo.systemUptime;
  timer_ = [NSTimer timerWithTimeInterval:frameInterval
                                  repeats:YES
                                    block:^(NSTimer*) {
                                      @autoreleasepool {
                                        tick();
                                      }
                                    }];
  [NSRunLoop.mainRunLoop addTimer:timer_ forMode:NSRunLoopCommonModes];
}

void Highlights::end() {
  [timer_ invalidate];
  timer_ = nil;
}

void Highlights::tick() {
  const NSTimeInterval now = NSProcessInfo.processInfo.systemUptime;
  if (!advance_(now - std::exchange(latestStep_, now))) end();
}

}  // namespace pellow
