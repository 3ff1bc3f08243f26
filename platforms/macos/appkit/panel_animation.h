#pragma once

#import <AppKit/AppKit.h>

#include <functional>

#include "platform/clock.h"
#include "platform/panels.h"

// Runs from 0 to 1 while the main run loop turns, also while menus and sliders are tracked. Main
// thread.
@interface PellowPanelAnimation : NSAnimation <NSAnimationDelegate>

// Gets the progress as the timing has it, then `onArrived`. Neither may end the animation's owner.
- (instancetype)initWithDuration:(pellow::Seconds)duration
                          timing:(pellow::AnimationTiming)timing
                          onStep:(std::function<void(double progress)>)onStep
                       onArrived:(std::function<void()>)onArrived;

// Ends it where it is; nothing is called again.
- (void)cutShort;

@end
