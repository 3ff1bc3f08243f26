#pragma once

#import <AppKit/AppKit.h>

#include "base/subscription.h"

namespace pellow {

// Takes this process to the front for one of its windows and gives the front back. When the window
// of an agent goes, the system activates nobody by itself, and keys go nowhere. Main thread.
class Foreground {
 public:
  Foreground();
  Foreground(const Foreground&) = delete;
  Foreground& operator=(const Foreground&) = delete;

  // Activates this process and puts the window in front, with the keyboard.
  void take(NSWindow* window);

  // Hands the activation back to the application that was active last, unless that has ended or is
  // hidden, or this process is not active any more.
  void giveBack();

 private:
  void note(NSRunningApplication* front);

  NSRunningApplication* former_ = nil;
  Subscription activations_;
};

// Keeps an object that AppKit may still be working with: a control whose action takes it away, a
// window that ends in one of its own events. Gone once the main run loop is outside of all of them.
// Main thread.
void keepUntilIdle(id object);

}  // namespace pellow
