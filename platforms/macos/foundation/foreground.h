#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "base/subscription.h"

namespace pellow {

// Brings this process to the front and gives the front back. When the window of an agent goes, the
// system activates nobody by itself, and keys go nowhere. One for all who show windows. Main
// thread.
class Foreground : public std::enable_shared_from_this<Foreground> {
 public:
  Foreground();
  Foreground(const Foreground&) = delete;
  Foreground& operator=(const Foreground&) = delete;

  // Activates this process and puts the window in front, with the keyboard. The polite request may
  // be refused to an agent: this insists soon after, while the window can be seen.
  void take(NSWindow* window);

  // The same without a window, or for one that others make.
  void take();

  // The window that came to the front last, if there still is one.
  NSWindow* latest() const { return latest_; }

  // Hands the activation back to the application that was active last or, if that has ended, to the
  // one that has the menu bar; unless it is hidden, or this process is not active any more.
  void giveBack();

  // The same later, on the main queue, unless a window of ours has the keyboard by then.
  void giveBackLater();

  // What was asked to come to the front now, this process included, keeps it: until another
  // application has become active, there is nobody to give back to.
  void passOn();

 private:
  void note(NSRunningApplication* front);

  NSRunningApplication* former_ = nil;
  __weak NSWindow* latest_ = nil;
  Subscription activations_;
};

}  // namespace pellow
