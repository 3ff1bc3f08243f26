#include "platforms/macos/foundation/activation.h"

#import <AppKit/AppKit.h>
#import <CoreFoundation/CoreFoundation.h>

namespace pellow {

// Not by the main queue: Sparkle runs its alerts in a nested loop, perhaps in that queue's work.
void activateThisProcess() {
  [NSApp activate];
  CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
    if (!NSApp.active) [NSApp activateIgnoringOtherApps:YES];
  });
}

}  // namespace pellow
