#pragma once

#import <AppKit/AppKit.h>

#include <optional>

#include "base/colour.h"
#include "platform/paint.h"

namespace pellow {

// Main thread.

NSColor* toNSColor(const Colour& colour);

// A system colour is dynamic: it has its shade only while something is drawn, so ask for components
// there or not at all.
NSColor* toNSColor(SystemColour colour);
NSColor* toNSColor(const Paint& paint);

// Nothing for a colour that sRGB cannot tell, such as a pattern, and for nil.
std::optional<Colour> toColour(NSColor* colour);

}  // namespace pellow
