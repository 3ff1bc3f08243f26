#include "platforms/macos/windows/mac_probe_windows.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "base/subscription.h"
#include "platforms/macos/foundation/colour.h"
#include "platforms/macos/foundation/foreground.h"
#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/notification.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

// AppKit may keep the title bar below the menu bar, and the window no higher than its screen, as it
// does for other applications: a probe that forbade it would reach places that their windows never
// do. The width it leaves alone.
NSWindow* makeNSWindow(Size contentSize) {
  return
      [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, contentSize.width, contentSize.height)
                                  styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                            NSWindowStyleMaskResizable
                                    backing:NSBackingStoreBuffered
                                      defer:YES];
}

NSPoint originOfCentred(NSSize window) {
  const NSRect room = NSScreen.mainScreen.visibleFrame;
  return NSMakePoint(NSMidX(room) - window.width / 2, NSMidY(room) - window.height / 2);
}

class MacProbeWindow final : public ProbeWindow {
 public:
  MacProbeWindow(std::shared_ptr<Foreground> foreground, NSString* name, NSString* title,
                 Size contentSize, const Colour& fill);
  ~MacProbeWindow() override;

  void setContentSize(Size size) override { [window_ setContentSize:toNSSize(size)]; }

 private:
  std::shared_ptr<Foreground> foreground_;
  NSWindow* window_;
  Subscription closing_;  // by the user
};

MacProbeWindow::MacProbeWindow(std::shared_ptr<Foreground> foreground, NSString* name,
                               NSString* title, Size contentSize, const Colour& fill)
    : foreground_(std::move(foreground)), window_(makeNSWindow(contentSize)) {
  window_.title = title;
  window_.identifier = name;
  window_.releasedWhenClosed = NO;
  window_.tabbingMode = NSWindowTabbingModeDisallowed;
  window_.backgroundColor = toNSColor(fill);
  [window_ setFrameOrigin:originOfCentred(window_.frame.size)];
  closing_ = observeNotification(NSNotificationCenter.defaultCenter, NSWindowWillCloseNotification,
                                 [this](NSNotification* notice) {
                                   if (notice.object == window_) foreground_->giveBackLater();
                                 });
  foreground_->take(window_);
}

MacProbeWindow::~MacProbeWindow() {
  if (window_.visible) foreground_->giveBackLater();
  [window_ orderOut:nil];
  keepUntilIdle(window_);
}

}  // namespace

MacProbeWindows::MacProbeWindows(std::shared_ptr<Foreground> foreground)
    : foreground_(std::move(foreground)) {}

std::unique_ptr<ProbeWindow> MacProbeWindows::openWindow(std::string name, std::string title,
                                                         Size contentSize, Colour fill) {
  return std::make_unique<MacProbeWindow>(foreground_, toNSString(name), toNSString(title),
                                          contentSize, fill);
}

}  // namespace pellow
