#pragma once

#import <AppKit/AppKit.h>

#include <functional>

// A horizontal slider that knows while the mouse holds its knob.
@interface PellowSlider : NSSlider {
 @public
  std::function<void()> onDragged;  // the drag has ended; its owner clears it before it goes
}

@property(nonatomic, readonly) BOOL isDragged;

@end
