#pragma once

#import <AppKit/AppKit.h>

#include <functional>

// Takes the action of a control to the C++ object behind it, which clears `onAction` before it
// goes.
@interface PellowControlTarget : NSObject {
 @public
  std::function<void()> onAction;
}

- (void)act:(id)sender;

@end
