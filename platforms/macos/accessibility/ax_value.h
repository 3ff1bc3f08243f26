#pragma once

#import <CoreFoundation/CoreFoundation.h>

#include <expected>

#include "platform/ax_element.h"
#include "platforms/macos/foundation/cf.h"

namespace pellow {

// What an attribute holds, from the type it really has, which need not be the documented one: a
// number counts as a truth. Answers the error that stands in its place, `noValue` for nothing
// (NULL, too) and `attributeUnsupported` for a type the program has no use for. Any thread.
std::expected<AXValue, AXError> toAXValue(CFTypeRef value);

// Empty when the system cannot make the value.
CFOwner<CFTypeRef> toCFValue(const AXValue& value);

}  // namespace pellow
