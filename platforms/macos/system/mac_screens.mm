#include "platforms/macos/system/mac_screens.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "platforms/macos/foundation/cf.h"
#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/notification.h"

namespace pellow {
namespace {

std::optional<DisplayID> displayOf(NSScreen* screen) {
  id const number = screen.deviceDescription[@"NSScreenNumber"];
  if (![number isKindOfClass:NSNumber.class]) return std::nullopt;
  return static_cast<NSNumber*>(number).unsignedIntValue;
}

Screen toScreen(NSScreen* screen) {
  return {.displayID = displayOf(screen),
          .frame = toAppKitRect(screen.frame),
          .visibleFrame = toAppKitRect(screen.visibleFrame)};
}

}  // namespace

MacScreens::MacScreens()
    : known_(all()),
      changes_(observeNotification(NSNotificationCenter.defaultCenter,
                                   NSApplicationDidChangeScreenParametersNotification,
                                   [this](NSNotification*) { parametersChanged(); })) {}

std::vector<Screen> MacScreens::all() const {
  std::vector<Screen> screens;
  for (NSScreen* screen in NSScreen.screens) screens.push_back(toScreen(screen));
  return screens;
}

std::optional<Screen> MacScreens::main() const {
  NSScreen* const withKeyboard = NSScreen.mainScreen;
  NSScreen* const screen = withKeyboard ? withKeyboard : NSScreen.screens.firstObject;
  if (!screen) return std::nullopt;
  return toScreen(screen);
}

bool MacScreens::areLocked() const {
  const auto session = CFOwner<CFDictionaryRef>::adopt(CGSessionCopyCurrentDictionary());
  id const isLocked = ((__bridge NSDictionary*)session.get())[@"CGSSessionScreenIsLocked"];
  return [isLocked isKindOfClass:NSNumber.class] && static_cast<NSNumber*>(isLocked).boolValue;
}

Subscription MacScreens::onDidChangeParameters(std::function<void()> observer) {
  return observers_.add(std::move(observer));
}

// The notice also comes when a display only changes its brightness reserve.
void MacScreens::parametersChanged() {
  auto screens = all();
  if (screens == known_) return;
  known_ = std::move(screens);
  observers_.notify();
}

}  // namespace pellow
