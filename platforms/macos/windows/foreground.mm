#include "platforms/macos/windows/foreground.h"

#include "platforms/macos/foundation/activation.h"
#include "platforms/macos/foundation/notification.h"

namespace pellow {

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

// The window goes first: activation leads to a Space where the process has one.
void Foreground::take(NSWindow* window) {
  [window orderFrontRegardless];
  activateThisProcess();
  [window makeKeyWindow];
}

void Foreground::giveBack() {
  if (!NSApp.active || !former_ || former_.terminated || former_.hidden) return;
  [NSApp yieldActivationToApplication:former_];
  [former_ activateFromApplication:NSRunningApplication.currentApplication options:0];
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
