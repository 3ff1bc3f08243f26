#include "platforms/macos/windows/form_slider.h"

@implementation PellowSlider

// Returns when the knob is let go. The slider may be out of its window by then, but it still lives.
- (void)mouseDown:(NSEvent*)event {
  _isDragged = YES;
  [super mouseDown:event];
  _isDragged = NO;
  if (const auto ended = onDragged) ended();
}

@end
