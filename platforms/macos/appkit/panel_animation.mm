#include "platforms/macos/appkit/panel_animation.h"

#include <utility>

namespace {

NSAnimationCurve curveOf(pellow::AnimationTiming timing) {
  switch (timing) {
    case pellow::AnimationTiming::linear:
      return NSAnimationLinear;
    case pellow::AnimationTiming::easeOut:
      return NSAnimationEaseOut;
    case pellow::AnimationTiming::easeInOut:
      return NSAnimationEaseInOut;
  }
  return NSAnimationLinear;
}

}  // namespace

@implementation PellowPanelAnimation {
  std::function<void(double)> _onStep;
  std::function<void()> _onArrived;
}

- (instancetype)initWithDuration:(pellow::Seconds)duration
                          timing:(pellow::AnimationTiming)timing
                          onStep:(std::function<void(double)>)onStep
                       onArrived:(std::function<void()>)onArrived {
  if ((self = [super initWithDuration:duration animationCurve:curveOf(timing)])) {
    _onStep = std::move(onStep);
    _onArrived = std::move(onArrived);
    self.animationBlockingMode = NSAnimationNonblocking;
    self.frameRate = 60;
    self.delegate = self;
  }
  return self;
}

- (void)setCurrentProgress:(NSAnimationProgress)progress {
  @autoreleasepool {
    [super setCurrentProgress:progress];
    if (_onStep) _onStep(self.currentValue);
  }
}

- (void)animationDidEnd:(NSAnimation*)__unused animation {
  @autoreleasepool {
    _onStep = nullptr;
    if (const auto onArrived = std::exchange(_onArrived, nullptr)) onArrived();
  }
}

- (void)cutShort {
  _onStep = nullptr;
  _onArrived = nullptr;
  [self stopAnimation];
}

@end
