#include "platforms/macos/appkit/backdrop.h"

#include <cmath>

namespace {

// The smallest image that can be stretched to a rounded rectangle of any size.
NSImage* roundedMask(double radius) {
  const double side = 2 * std::ceil(radius) + 1;
  NSImage* const mask = [NSImage imageWithSize:NSMakeSize(side, side)
                                       flipped:NO
                                drawingHandler:^BOOL(NSRect area) {
                                  [NSColor.blackColor setFill];
                                  [[NSBezierPath bezierPathWithRoundedRect:area
                                                                   xRadius:radius
                                                                   yRadius:radius] fill];
                                  return YES;
                                }];
  const double cap = std::ceil(radius);
  mask.capInsets = NSEdgeInsetsMake(cap, cap, cap, cap);
  mask.resizingMode = NSImageResizingModeStretch;
  return mask;
}

}  // namespace

@implementation PellowBackdrop

- (instancetype)initWithFrame:(NSRect)frame {
  if ((self = [super initWithFrame:frame])) {
    self.material = NSVisualEffectMaterialPopover;
    self.blendingMode = NSVisualEffectBlendingModeBehindWindow;
    self.state = NSVisualEffectStateActive;
  }
  return self;
}

- (void)setMaskRadius:(double)maskRadius {
  if (_maskRadius == maskRadius) return;
  _maskRadius = maskRadius;
  self.maskImage = maskRadius > 0 ? roundedMask(maskRadius) : nil;
}

@end
