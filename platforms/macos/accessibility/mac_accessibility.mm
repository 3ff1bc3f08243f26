#include "platforms/macos/accessibility/mac_accessibility.h"

#import <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>

#include <memory>
#include <utility>

#include "platforms/macos/accessibility/ax_element.h"
#include "platforms/macos/accessibility/ax_observer.h"

namespace pellow {
namespace {

using Ref = CFOwner<AXUIElementRef>;

// Its timeout is that of the whole process, so there is one for all, whose calls take turns; and it
// is not wrapped, which would set a timeout.
AXElement makeSystemWide() {
  return AXElement(std::make_shared<MacElement>(Ref::adopt(AXUIElementCreateSystemWide())));
}

}  // namespace

MacAccessibility::MacAccessibility() : systemWide_(makeSystemWide()) {}

bool MacAccessibility::isProcessTrusted() const { return AXIsProcessTrusted(); }

bool MacAccessibility::isProcessTrustedWithPrompt() {
  NSDictionary* const options = @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : @YES};
  const auto owned =
      CFOwner<CFDictionaryRef>::adopt(static_cast<CFDictionaryRef>(CFBridgingRetain(options)));
  return AXIsProcessTrustedWithOptions(owned.get());
}

AXElement MacAccessibility::application(ProcessID pid) {
  return MacElement::wrap(Ref::adopt(AXUIElementCreateApplication(pid)));
}

std::expected<AXElement, AXError> MacAccessibility::elementAtPosition(const AXElement& systemWide,
                                                                      QuartzPoint point,
                                                                      Seconds timeout) {
  AXUIElementRef found = nullptr;
  const auto error = MacElement::of(systemWide).ask(timeout, [&](AXUIElementRef element) {
    return AXUIElementCopyElementAtPosition(element, static_cast<float>(point.x),
                                            static_cast<float>(point.y), &found);
  });
  auto owned = Ref::adopt(found);
  if (error != AXError::success) return std::unexpected(error);
  if (!owned) return std::unexpected(AXError::noValue);
  return MacElement::wrap(std::move(owned));
}

std::expected<Subscription, AXError> MacAccessibility::observe(
    const AXElement& element, std::string_view notification,
    std::function<void(const AXElement&)> handler, Seconds timeout) {
  return observeElement(element, notification, std::move(handler), timeout);
}

}  // namespace pellow
