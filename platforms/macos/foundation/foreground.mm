#include "platforms/macos/foundation/foreground.h"

#import <CoreFoundation/CoreFoundation.h>

#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/notification.h"

namespace pellow {
namespace {

// Without a window it insists all the same. Not by the main queue: Sparkle runs its alerts in a
// nested loop, perhaps in that queue's work.
void activateFor(NSWindow* windowOrNil) {
  [NSApp activate];
  CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
    const bool isWanted = !windowOrNil || windowOrNil.visible;
    if (isWanted && !NSApp.active) [NSApp activateIgnoringOtherApps:YES];
  });
  CFRunLoopWakeUp(CFRunLoopGetMain());
}

}  // namespace

Foreground::Foreground() {
  NSWorkspace* const workspace = NSWorkspace.sharedWorkspace;
  note(workspace.menuBarOwningApplication);  // this process may be in front already, as it starts
  note(workspace.frontmostApplication);
  activations_ = observeNotification(
      workspace.notificationCenter, NSWorkspaceDidActivateApplicationNotification,
      [this](NSNotification* notice) { note(notice.userInfo[NSWorkspaceApplicationKey]); });
}

void Foreground::note(NSRunningApplication* front) {
  if (front && ![front isEqual:NSRunningApplication.currentApplication]) former_ = front;
}

// The window goes first: activation leads to a Space where the process has one. While the process
// is hidden, none of its windows counts as visible.
void Foreground::take(NSWindow* window) {
  note(NSWorkspace.sharedWorkspace.frontmostApplication);
  latest_ = window;
  [NSApp unhideWithoutActivation];
  [window orderFrontRegardless];
  activateFor(window);
  [window makeKeyWindow];
}

void Foreground::take() {
  note(NSWorkspace.sharedWorkspace.frontmostApplication);
  activateFor(nil);
}

// An application that has ended may have been a mere question of the system's; the menu bar is
// still that of the one before.
void Foreground::giveBack() {
  if (former_.terminated) note(NSWorkspace.sharedWorkspace.menuBarOwningApplication);
  if (!NSApp.active || !former_ || former_.terminated || former_.hidden) return;
  [NSApp yieldActivationToApplication:former_];
  [former_ activateFromApplication:NSRunningApplication.currentApplication options:0];
}

void Foreground::giveBackLater() {
  hopToMain([weak = weak_from_this()] {
    const auto self = weak.lock();
    if (self && !NSApp.keyWindow) self->giveBack();
  });
}

void Foreground::passOn() { former_ = nil; }

}  // namespace pellow
