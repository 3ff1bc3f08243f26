#include "platforms/macos/windows/control_target.h"

#include "platforms/macos/foundation/main_queue.h"

@implementation PellowControlTarget

// The work may end this object.
- (void)act:(id)sender {
  pellow::runInPool([work = onAction] {
    if (work) work();
  });
}

@end
