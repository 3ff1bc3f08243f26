#pragma once

#import <AppKit/AppKit.h>

#include <cstddef>
#include <functional>

#include "platform/alerts.h"

// The window of one alert: icon, message, text and buttons, the first at the right. Return presses
// the first button, Escape the last. Nothing else closes it. Main thread.
@interface PellowAlertWindow : NSWindow {
 @public
  std::function<void(std::size_t button)> onAnswer;  // called once, from an event
}

- (instancetype)initWithAlert:(const pellow::Alert&)alert;

@end
