#include "platforms/macos/foundation/main_queue.h"

#import <Foundation/Foundation.h>

#include <memory>
#include <utility>

namespace pellow {

void hopToMain(Function<void()> work) {
  // A block copies what it holds, and work cannot be copied.
  const auto held = std::make_shared<Function<void()>>(std::move(work));
  dispatch_async(dispatch_get_main_queue(), ^{
    runInPool(std::move(*held));
  });
}

void runInPool(Function<void()> work) noexcept {
  @autoreleasepool {
    work();
    work = nullptr;  // what it holds goes in the pool, too
  }
}

// Events are handled, and their tracking loops run, outside of the default mode.
void keepUntilIdle(id object) {
  if (!object) return;
  [NSRunLoop.mainRunLoop performInModes:@[ NSDefaultRunLoopMode ]
                                  block:^{
                                    (void)object;
                                  }];
}

}  // namespace pellow
