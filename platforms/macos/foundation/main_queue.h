#pragma once

#include "base/function.h"

namespace pellow {

// Runs `work` on the main queue, later, in an autorelease pool of its own; drops it there, too. Any
// thread.
void hopToMain(Function<void()> work);

// For whatever the system calls: runs work in an autorelease pool of its own. An exception ends the
// process here, where the stack still tells whose it is; dispatch and AppKit let none pass.
void runInPool(Function<void()> work) noexcept;

// Runs `work` once the main run loop is outside of all events, as `runInPool` does. Main thread.
void whenIdle(Function<void()> work);

// Keeps an object that AppKit may still be working with: a control whose action takes it away, a
// window that ends in one of its own events. Main thread.
void keepUntilIdle(id object);

}  // namespace pellow
