#include "platforms/macos/system/mac_workspace.h"
#import <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platforms/macos/foundation/cf.h"
#include "platforms/macos/foundation/foreground.h"
#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/image.h"
#include "platforms/macos/foundation/notification.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

NSRunningApplication* withPid(ProcessID pid) {
  NSRunningApplication* const found =
      [NSRunningApplication runningApplicationWithProcessIdentifier:pid];
  return found.terminated ? nil : found;
}

ActivationPolicy policyOf(NSRunningApplication* application) {
  switch (application.activationPolicy) {
    case NSApplicationActivationPolicyRegular:
      return ActivationPolicy::regular;
    case NSApplicationActivationPolicyAccessory:
      return ActivationPolicy::accessory;
    case NSApplicationActivationPolicyProhibited:
      return ActivationPolicy::prohibited;
  }
  return ActivationPolicy::prohibited;
}

std::optional<std::string> bundleIDOf(NSRunningApplication* application) {
  NSString* const identifier = application.bundleIdentifier;
  if (!identifier) return std::nullopt;
  return toText(identifier);
}

// One that was started without Launch Services tells no date; it comes first.
NSDate* launchDateOf(NSRunningApplication* application) {
  NSDate* const date = application.launchDate;
  return date ? date : NSDate.distantPast;
}

NSArray<NSRunningApplication*>* inLaunchOrder(NSArray<NSRunningApplication*>* applications) {
  return [applications
      sortedArrayWithOptions:NSSortStable
             usingComparator:^(NSRunningApplication* one, NSRunningApplication* other) {
               return [launchDateOf(one) compare:launchDateOf(other)];
             }];
}

// Front to back. Names of windows would need a permission; nothing else does.
CFOwner<CFArrayRef> listWindows(CGWindowListOption which) {
  return CFOwner<CFArrayRef>::adopt(
      CGWindowListCopyWindowInfo(which | kCGWindowListExcludeDesktopElements, kCGNullWindowID));
}

id valueOf(NSDictionary* window, CFStringRef key) { return window[(__bridge NSString*)key]; }

// In the layer of ordinary windows, and to be seen.
bool isOrdinary(NSDictionary* window) {
  return [valueOf(window, kCGWindowLayer) intValue] == 0 &&
         [valueOf(window, kCGWindowAlpha) doubleValue] > 0;
}

// Not on the screen: on another Space, or minimized, hidden or ordered out, which the window server
// does not tell apart.
bool isOrdinaryAndElsewhere(NSDictionary* window, ProcessID owner) {
  return [valueOf(window, kCGWindowOwnerPID) intValue] == owner && isOrdinary(window) &&
         ![valueOf(window, kCGWindowIsOnscreen) boolValue];
}

}  // namespace

MacWorkspace::MacWorkspace(std::shared_ptr<Foreground> foreground)
    : foreground_(std::move(foreground)),
      running_({.didBecomeRegular = [this](ProcessID pid) { becameRegular_.notify(pid); },
                .didTerminate =
                    [this](ProcessID pid) {
                      icons_.erase(pid);
                      terminated_.notify(pid);
                    }}) {}

std::vector<RunningApplication> MacWorkspace::runningApplications() {
  std::vector<RunningApplication> all;
  for (NSRunningApplication* each in inLaunchOrder(NSWorkspace.sharedWorkspace.runningApplications))
    if (each.processIdentifier > 0) all.push_back(describe(each));
  return all;
}

std::optional<RunningApplication> MacWorkspace::application(ProcessID pid) {
  NSRunningApplication* const found = withPid(pid);
  if (!found) return std::nullopt;
  return describe(found);
}

std::optional<ProcessID> MacWorkspace::frontmostApplication() {
  NSRunningApplication* const front = NSWorkspace.sharedWorkspace.frontmostApplication;
  if (!front || front.processIdentifier <= 0) return std::nullopt;
  return front.processIdentifier;
}

bool MacWorkspace::hide(ProcessID pid) { return [withPid(pid) hide]; }
bool MacWorkspace::unhide(ProcessID pid) { return [withPid(pid) unhide]; }
bool MacWorkspace::activate(ProcessID pid) {
  return [withPid(pid) activateWithOptions:NSApplicationActivationOptions{}];
}

// The desktop is a window of the Finder, but where the Finder has others, or would show them, one
// of them would get the keyboard: then this process, which has none that takes it.
void MacWorkspace::activateDesktop() {
  NSRunningApplication* const finder =
      [NSRunningApplication runningApplicationsWithBundleIdentifier:@"com.apple.finder"]
          .firstObject;
  const auto isFinders = [&](const WindowOnScreen& window) {
    return window.owner == finder.processIdentifier;
  };
  const bool hasOnlyDesktop =
      finder && !finder.hidden && std::ranges::none_of(windowsOnScreen(), isFinders);
  if (hasOnlyDesktop) {
    [finder activateWithOptions:NSApplicationActivationOptions{}];
  } else {
    foreground_->take();
    foreground_->passOn();
  }
}

std::vector<WindowOnScreen> MacWorkspace::windowsOnScreen() {
  std::vector<WindowOnScreen> windows;
  const auto listed = listWindows(kCGWindowListOptionOnScreenOnly);
  for (NSDictionary* window in (__bridge NSArray*)listed.get()) {
    CGRect frame = CGRectNull;
    if (!isOrdinary(window) ||
        !CGRectMakeWithDictionaryRepresentation(
            (__bridge CFDictionaryRef)valueOf(window, kCGWindowBounds), &frame))
      continue;
    windows.push_back({[valueOf(window, kCGWindowOwnerPID) intValue], toQuartzRect(frame)});
  }
  return windows;
}

std::string MacWorkspace::windowServerDescription() {
  return "macOS " + toText(NSProcessInfo.processInfo.operatingSystemVersionString);
}

bool MacWorkspace::hasWindowsOnOtherSpaces(ProcessID pid) {
  const auto listed = listWindows(kCGWindowListOptionAll);
  for (NSDictionary* window in (__bridge NSArray*)listed.get())
    if (isOrdinaryAndElsewhere(window, pid)) return true;
  return false;
}

bool MacWorkspace::open(std::string_view url) {
  NSURL* const parsed = [NSURL URLWithString:toNSString(url)];
  if (!parsed || ![NSWorkspace.sharedWorkspace openURL:parsed]) return false;
  foreground_->passOn();
  return true;
}

Subscription MacWorkspace::onDidActivateApplication(std::function<void(ProcessID)> observer) {
  return observeNotification(
      NSWorkspace.sharedWorkspace.notificationCenter, NSWorkspaceDidActivateApplicationNotification,
      [observer = std::move(observer)](NSNotification* notification) {
        NSRunningApplication* const application = notification.userInfo[NSWorkspaceApplicationKey];
        if (application.processIdentifier > 0) observer(application.processIdentifier);
      });
}

Subscription MacWorkspace::onDidBecomeRegular(std::function<void(ProcessID)> observer) {
  return becameRegular_.add(std::move(observer));
}

Subscription MacWorkspace::onDidTerminateApplication(std::function<void(ProcessID)> observer) {
  return terminated_.add(std::move(observer));
}

Subscription MacWorkspace::onDidChangeActiveSpace(std::function<void()> observer) {
  return observeNotification(NSWorkspace.sharedWorkspace.notificationCenter,
                             NSWorkspaceActiveSpaceDidChangeNotification,
                             [observer = std::move(observer)](NSNotification*) { observer(); });
}

RunningApplication MacWorkspace::describe(NSRunningApplication* application) {
  return {.pid = application.processIdentifier,
          .bundleID = bundleIDOf(application),
          .localizedName = toText(application.localizedName),
          .icon = iconOf(application),
          .activationPolicy = policyOf(application)};
}

// Nobody sees those of background processes, and there are many.
std::optional<Image> MacWorkspace::iconOf(NSRunningApplication* application) {
  if (policyOf(application) == ActivationPolicy::prohibited) return std::nullopt;
  const auto pid = application.processIdentifier;
  const auto known = icons_.find(pid);
  if (known != icons_.end() && [known->second.owner isEqual:application])
    return known->second.image;
  NSImage* const icon = application.icon;
  if (!icon) return std::nullopt;
  const Image image(std::make_shared<MacImage>(icon));
  icons_.insert_or_assign(pid, Icon{.owner = application, .image = image});
  return image;
}

}  // namespace pellow
