#include "platforms/macos/foundation/main_queue.h"

#import <Foundation/Foundation.h>

#include <memory>
#include <utility>

namespace pellow {
namespace {

// A block copies what it holds, and work cannot be copied.
dispatch_block_t blockOf(Function<void()> work) {
  const auto held = std::make_shared<Function<void()>>(std::move(work));
  return ^{
    runInPool(std::move(*held));
  };
}

}  // namespace

void hopToMain(Function<void()> work) {
  dispatch_async(dispatch_get_main_queue(), blockOf(std::move(work)));
}

void runInPool(Function<void()> work) noexcept {
  @autoreleasepool {
    work();
    work = nullptr;  // what it holds goes in the pool, too
  }
}

// Events are handled, and their tracking loops run, outside of the default mode.
void whenIdle(Function<void()> work) {
  [NSRunLoop.mainRunLoop performInModes:@[ NSDefaultRunLoopMode ] block:blockOf(std::move(work))];
}

void keepUntilIdle(id object) {
  if (object) whenIdle([object] { (void)object; });
}

}  // namespace pellow
