#pragma once

#import <AppKit/AppKit.h>

#include <string_view>

namespace pellow {

// A system symbol by its name, for example "pin.fill"; nil when the system has none of that name.
// It is a template image. `configuration` may be nil: the symbol in its ordinary size. Main thread.
NSImage* symbolImage(std::string_view name, NSImageSymbolConfiguration* configuration = nil,
                     std::string_view accessibilityDescription = {});

}  // namespace pellow
