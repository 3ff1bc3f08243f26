#include "platforms/macos/appkit/mac_system_colours.h"

#import <AppKit/AppKit.h>

#include <optional>

#include "platforms/macos/foundation/colour.h"

namespace pellow {

Colour MacSystemColours::resolve(SystemColour colour) const {
  __block std::optional<Colour> resolved;
  [NSApp.effectiveAppearance performAsCurrentDrawingAppearance:^{
    resolved = toColour(toNSColor(colour));
  }];
  return resolved.value_or(Colour(0.5, 0.5, 0.5));
}

}  // namespace pellow
