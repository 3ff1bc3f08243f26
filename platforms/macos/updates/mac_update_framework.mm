#include "platforms/macos/updates/mac_update_framework.h"

#include <algorithm>
#include <utility>

#include "platforms/macos/foundation/foreground.h"
#include "platforms/macos/foundation/text.h"
#include "platforms/macos/updates/sparkle.h"

// Beside a modal window AppKit would refuse to quit, and to log out. There is none yet.
static void letQuitBesideModalWindow() {
  CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
    NSApp.modalWindow.preventsApplicationTerminationWhenModal = NO;
  });
  CFRunLoopWakeUp(CFRunLoopGetMain());
}

// Hands on what Sparkle tells, on the main thread.
@interface PellowSparkleDelegate : NSObject <PellowSparkleDelegate> {
 @public
  pellow::UpdateDelegate handlers;
  std::shared_ptr<pellow::Foreground> foreground;
}
@end

@implementation PellowSparkleDelegate

- (BOOL)supportsGentleScheduledUpdateReminders {
  return YES;
}

- (BOOL)standardUserDriverShouldHandleShowingScheduledUpdate:(id<PellowSparkleItem>)update
                                         andInImmediateFocus:(BOOL)immediateFocus {
  return NO;
}

- (void)standardUserDriverWillHandleShowingUpdate:(BOOL)handleShowingUpdate
                                        forUpdate:(id<PellowSparkleItem>)update
                                            state:(id)state {
  if (const auto call = handlers.willShowUpdate)
    call(handleShowingUpdate, pellow::toText(update.displayVersionString));
}

- (void)standardUserDriverDidReceiveUserAttentionForUpdate:(id<PellowSparkleItem>)update {
  if (const auto call = handlers.didReceiveUserAttention) call();
}

- (void)standardUserDriverWillShowModalAlert {
  foreground->take();
  letQuitBesideModalWindow();
}

// What it shows may still be there.
- (void)standardUserDriverWillFinishUpdateSession {
  foreground->giveBackLater();
}

- (void)updaterWillRelaunchApplication:(id<PellowSparkleUpdater>)updater {
  if (const auto call = handlers.willRelaunchApplication) call();
}

@end

namespace pellow {
namespace {

NSString* textInInfo(NSString* key) {
  id const value = [NSBundle.mainBundle objectForInfoDictionaryKey:key];
  return [value isKindOfClass:NSString.class] ? value : nil;
}

Class loadControllerClass() {
  NSString* const path = [NSBundle.mainBundle.privateFrameworksPath
      stringByAppendingPathComponent:@"Sparkle.framework"];
  if (!path || ![[NSBundle bundleWithPath:path] load]) return Nil;
  return NSClassFromString(@"SPUStandardUpdaterController");
}

}  // namespace

MacUpdateFramework::MacUpdateFramework(const Log& log, std::shared_ptr<Foreground> foreground)
    : log_(log), foreground_(std::move(foreground)) {}

MacUpdateFramework::~MacUpdateFramework() {
  if (delegate_) delegate_->handlers = {};
}

// Without a feed Sparkle would complain to the user.
void MacUpdateFramework::start(UpdateDelegate delegate) {
  if (textInInfo(@"SUFeedURL").length == 0)
    return log_.info("This build names no feed of updates and looks for none");
  Class const controllerClass = loadControllerClass();
  if (!controllerClass) return log_.error("Sparkle cannot be loaded; there are no updates");
  delegate_ = [[PellowSparkleDelegate alloc] init];
  delegate_->handlers = std::move(delegate);
  delegate_->foreground = foreground_;
  controller_ = [static_cast<id<PellowSparkleController>>([controllerClass alloc])
      initWithStartingUpdater:YES
              updaterDelegate:delegate_
           userDriverDelegate:delegate_];
}

void MacUpdateFramework::checkForUpdates() {
  if (!controller_) return;
  foreground_->take();
  [controller_.updater checkForUpdates];
}

bool MacUpdateFramework::automaticallyChecks() const {
  return controller_.updater.automaticallyChecksForUpdates;
}

void MacUpdateFramework::setAutomaticallyChecks(bool automatically) {
  controller_.updater.automaticallyChecksForUpdates = automatically;
}

std::optional<Seconds> MacUpdateFramework::sinceLastCheck() const {
  NSDate* const last = controller_.updater.lastUpdateCheckDate;
  if (!last) return std::nullopt;
  return std::max(-last.timeIntervalSinceNow, 0.0);
}

std::optional<std::string> MacUpdateFramework::currentVersion() const {
  NSString* const version = textInInfo(@"CFBundleShortVersionString");
  if (!version) return std::nullopt;
  return toText(version);
}

}  // namespace pellow
