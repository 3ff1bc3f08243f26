#include "platforms/macos/foundation/activation.h"

#import <AppKit/AppKit.h>

#include "platforms/macos/foundation/main_queue.h"

namespace pellow {

void activateThisProcess() {
  [NSApp activate];
  hopToMain([] {
    if (!NSApp.active) [NSApp activateIgnoringOtherApps:YES];
  });
}

}  // namespace pellow
