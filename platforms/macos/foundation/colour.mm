#include "platforms/macos/foundation/colour.h"

#include <variant>

namespace pellow {

NSColor* toNSColor(const Colour& colour) {
  return [NSColor colorWithSRGBRed:colour.red()
                             green:colour.green()
                              blue:colour.blue()
                             alpha:colour.alpha()];
}

NSColor* toNSColor(SystemColour colour) {
  switch (colour) {
    case SystemColour::label:
      return NSColor.labelColor;
    case SystemColour::secondaryLabel:
      return NSColor.secondaryLabelColor;
    case SystemColour::separator:
      return NSColor.separatorColor;
    case SystemColour::accent:
      return NSColor.controlAccentColor;
    case SystemColour::red:
      return NSColor.systemRedColor;
    case SystemColour::orange:
      return NSColor.systemOrangeColor;
    case SystemColour::yellow:
      return NSColor.systemYellowColor;
    case SystemColour::green:
      return NSColor.systemGreenColor;
    case SystemColour::blue:
      return NSColor.systemBlueColor;
    case SystemColour::purple:
      return NSColor.systemPurpleColor;
    case SystemColour::pink:
      return NSColor.systemPinkColor;
    case SystemColour::grey:
      return NSColor.systemGrayColor;
  }
  return NSColor.labelColor;
}

NSColor* toNSColor(const Paint& paint) {
  return std::visit([](const auto& each) { return toNSColor(each); }, paint);
}

std::optional<Colour> toColour(NSColor* colour) {
  NSColor* const converted = [colour colorUsingColorSpace:NSColorSpace.sRGBColorSpace];
  if (!converted) return std::nullopt;
  CGFloat red = 0, green = 0, blue = 0, alpha = 0;
  [converted getRed:&red green:&green blue:&blue alpha:&alpha];
  return Colour(red, green, blue, alpha);
}

}  // namespace pellow
