#include "platforms/macos/accessibility/ax_value.h"

#import <ApplicationServices/ApplicationServices.h>

#include <cmath>

#include "platforms/macos/accessibility/ax_element.h"
#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/text.h"

namespace pellow {
namespace {

using Answer = std::expected<AXValue, AXError>;

AXElement element(CFTypeRef borrowed) {
  return MacElement::wrap(CFOwner<AXUIElementRef>::retain(static_cast<AXUIElementRef>(borrowed)));
}

// An application may say anything, and AppKit ends a process that takes it for a frame.
Answer finite(double one, double other, AXValue value) {
  constexpr double most = 1e6;  // points; no display is as far away
  if (std::abs(one) <= most && std::abs(other) <= most) return value;
  return std::unexpected(AXError::noValue);
}

Answer unpacked(AXValueRef value) {
  CGPoint point{};
  if (AXValueGetValue(value, kAXValueTypeCGPoint, &point))
    return finite(point.x, point.y, toQuartzPoint(point));
  CGSize size{};
  if (AXValueGetValue(value, kAXValueTypeCGSize, &size))
    return finite(size.width, size.height, toSize(size));
  ::AXError error = kAXErrorSuccess;
  if (AXValueGetValue(value, kAXValueTypeAXError, &error) && error != kAXErrorSuccess)
    return std::unexpected(AXError{error});
  return std::unexpected(AXError::attributeUnsupported);
}

bool isNonZero(CFNumberRef number) {
  double value = 0;
  CFNumberGetValue(number, kCFNumberDoubleType, &value);
  return value != 0;
}

std::vector<AXElement> elements(CFArrayRef array) {
  std::vector<AXElement> all;
  const auto count = CFArrayGetCount(array);
  for (CFIndex i = 0; i < count; ++i) {
    const auto member = CFArrayGetValueAtIndex(array, i);
    if (member && CFGetTypeID(member) == AXUIElementGetTypeID()) all.push_back(element(member));
  }
  return all;
}

using Packed = CFOwner<CFTypeRef>;

struct Packer {
  Packed operator()(bool truth) const {
    return Packed::retain(truth ? kCFBooleanTrue : kCFBooleanFalse);
  }
  Packed operator()(const std::string& text) const {
    return Packed::retain(toCFString(text).get());
  }
  Packed operator()(QuartzPoint point) const {
    const auto value = toCGPoint(point);
    return Packed::adopt(AXValueCreate(kAXValueTypeCGPoint, &value));
  }
  Packed operator()(Size size) const {
    const auto value = toCGSize(size);
    return Packed::adopt(AXValueCreate(kAXValueTypeCGSize, &value));
  }
  Packed operator()(const AXElement& one) const {
    return Packed::retain(MacElement::of(one).ref());
  }
  Packed operator()(const std::vector<AXElement>& several) const {
    const auto array =
        CFArrayCreateMutable(nullptr, static_cast<CFIndex>(several.size()), &kCFTypeArrayCallBacks);
    for (const auto& each : several) CFArrayAppendValue(array, MacElement::of(each).ref());
    return Packed::adopt(array);
  }
};

}  // namespace

Answer toAXValue(CFTypeRef value) {
  if (!value) return std::unexpected(AXError::noValue);
  const auto type = CFGetTypeID(value);
  if (type == CFNullGetTypeID()) return std::unexpected(AXError::noValue);
  if (type == CFBooleanGetTypeID()) return CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0;
  if (type == CFNumberGetTypeID()) return isNonZero(static_cast<CFNumberRef>(value));
  if (type == CFStringGetTypeID()) return toText((__bridge NSString*)value);
  if (type == AXValueGetTypeID()) return unpacked(static_cast<AXValueRef>(value));
  if (type == AXUIElementGetTypeID()) return element(value);
  if (type == CFArrayGetTypeID()) return elements(static_cast<CFArrayRef>(value));
  return std::unexpected(AXError::attributeUnsupported);
}

CFOwner<CFTypeRef> toCFValue(const AXValue& value) { return std::visit(Packer{}, value); }

}  // namespace pellow
