#include "platforms/macos/appkit/mac_event_monitors.h"

#import <ApplicationServices/ApplicationServices.h>

#include <utility>

#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

constexpr NSEventMask pointerMask = NSEventMaskMouseMoved | NSEventMaskLeftMouseDragged;
constexpr NSEventMask mouseDownMask =
    NSEventMaskLeftMouseDown | NSEventMaskRightMouseDown | NSEventMaskOtherMouseDown;

}  // namespace

bool MacEventMonitors::Monitor::begin(id token) {
  end();
  token_ = token;
  return token_ != nil;
}

void MacEventMonitors::Monitor::end() {
  if (id const token = std::exchange(token_, nil)) [NSEvent removeMonitor:token];
}

// Without trust AppKit gives a monitor all the same, which never hears of a key.
std::optional<Subscription> MacEventMonitors::addGlobalKeyDown(
    std::function<void(const KeyEvent&)> handler) {
  if (!AXIsProcessTrusted()) return std::nullopt;
  if (globalKeys_.isEmpty()) {
    id const token = [NSEvent addGlobalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                            handler:^(NSEvent* event) {
                                                              globalKeyDown(event);
                                                            }];
    if (!globalKeyMonitor_.begin(token)) return std::nullopt;
  }
  return globalKeys_.add(std::move(handler));
}

std::optional<Subscription> MacEventMonitors::addLocalKeyDown(
    std::function<bool(const KeyEvent&)> handler) {
  if (localKeys_.isEmpty()) {
    id const token = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                           handler:^NSEvent*(NSEvent* event) {
                                                             return localKeyDown(event);
                                                           }];
    if (!localKeyMonitor_.begin(token)) return std::nullopt;
  }
  return localKeys_.add(std::move(handler));
}

std::optional<Subscription> MacEventMonitors::addGlobalPointerMoved(std::function<void()> handler) {
  if (globalPointer_.isEmpty()) {
    id const token = [NSEvent
        addGlobalMonitorForEventsMatchingMask:pointerMask
                                      handler:^(NSEvent*) {
                                        pointerActed(globalPointer_, globalPointerMonitor_);
                                      }];
    if (!globalPointerMonitor_.begin(token)) return std::nullopt;
  }
  return globalPointer_.add(std::move(handler));
}

std::optional<Subscription> MacEventMonitors::addLocalPointerMoved(std::function<void()> handler) {
  if (localPointer_.isEmpty()) {
    id const token =
        [NSEvent addLocalMonitorForEventsMatchingMask:pointerMask
                                              handler:^NSEvent*(NSEvent* event) {
                                                pointerActed(localPointer_, localPointerMonitor_);
                                                return event;
                                              }];
    if (!localPointerMonitor_.begin(token)) return std::nullopt;
  }
  return localPointer_.add(std::move(handler));
}

std::optional<Subscription> MacEventMonitors::addGlobalMouseDown(std::function<void()> handler) {
  if (globalMouseDown_.isEmpty()) {
    id const token = [NSEvent
        addGlobalMonitorForEventsMatchingMask:mouseDownMask
                                      handler:^(NSEvent*) {
                                        pointerActed(globalMouseDown_, globalMouseDownMonitor_);
                                      }];
    if (!globalMouseDownMonitor_.begin(token)) return std::nullopt;
  }
  return globalMouseDown_.add(std::move(handler));
}

AppKitPoint MacEventMonitors::pointerLocation() const {
  return toAppKitPoint(NSEvent.mouseLocation);
}

// Every key press of the desktop comes here: no text is made of it.
void MacEventMonitors::globalKeyDown(NSEvent* event) noexcept {
  @autoreleasepool {
    if (globalKeys_.isEmpty()) return globalKeyMonitor_.end();
    if (event.ARepeat) return;
    globalKeys_.notify({.keyCode = event.keyCode, .modifierFlags = event.modifierFlags});
  }
}

// A repeat shares the fate of its press, even if the handler that swallowed it is gone.
NSEvent* MacEventMonitors::localKeyDown(NSEvent* event) noexcept {
  @autoreleasepool {
    if (event.ARepeat) return swallowedKey_ == event.keyCode ? nil : event;
    swallowedKey_.reset();
    if (localKeys_.isEmpty()) {
      localKeyMonitor_.end();
      return event;
    }
    const std::uint16_t keyCode = event.keyCode;
    const auto characters = toText(event.charactersIgnoringModifiers);
    const bool passes = localKeys_.newestFirst({.keyCode = keyCode,
                                                .modifierFlags = event.modifierFlags,
                                                .charactersIgnoringModifiers = characters});
    if (passes) return event;
    swallowedKey_ = keyCode;
    return nil;
  }
}

void MacEventMonitors::pointerActed(const HandlerList<void()>& handlers,
                                    Monitor& monitor) noexcept {
  @autoreleasepool {
    if (handlers.isEmpty()) return monitor.end();
    handlers.notify();
  }
}

}  // namespace pellow
