#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

#include "platforms/macos/foundation/cf.h"

namespace pellow {

// The text as Foundation holds it, never nil: bytes that are not UTF-8 are read as Latin 1. Any
// thread.
NSString* toNSString(std::string_view text);

// The same for Core Foundation. Bridging an NSString in the middle of a call would not keep it
// alive until the call returns.
CFOwner<CFStringRef> toCFString(std::string_view text);

// UTF-8; empty for nil. Half a surrogate pair, which has no UTF-8, becomes a question mark. Any
// thread.
std::string toText(NSString* text);

}  // namespace pellow
