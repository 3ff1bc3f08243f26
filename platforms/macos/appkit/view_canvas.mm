#include "platforms/macos/appkit/view_canvas.h"

#include <cmath>
#include <utility>

namespace {

// A window's sides are whole pixels; what is lost by that is no reason to blur texts.
double stretchOf(double contentSide, double side) {
  return std::abs(side - contentSide) < 1 ? 1 : side / contentSide;
}

}  // namespace

@implementation PellowViewCanvas {
  std::shared_ptr<const pellow::ViewTree> _tree;
}

- (instancetype)initWithTree:(std::shared_ptr<const pellow::ViewTree>)tree {
  if ((self = [super initWithFrame:NSZeroRect])) _tree = std::move(tree);
  return self;
}

- (pellow::Stretch)stretch {
  const auto& root = _tree->root();
  if (!root || root->frame.width() <= 0 || root->frame.height() <= 0) return {};
  const NSSize size = self.bounds.size;
  if (size.width <= 0 || size.height <= 0) return {};
  return {stretchOf(root->frame.width(), size.width), stretchOf(root->frame.height(), size.height)};
}

- (void)contentNeedsDisplayIn:(CGRect)area {
  if (CGRectIsNull(area)) return;
  const auto stretch = self.stretch;
  const NSRect drawn =
      CGRectApplyAffineTransform(area, CGAffineTransformMakeScale(stretch.x, stretch.y));
  [self setNeedsDisplayInRect:NSIntegralRect(NSInsetRect(drawn, -1, -1))];
}

- (void)drawRect:(NSRect)dirtyRect {
  const auto stretch = self.stretch;
  const auto toCanvas = CGAffineTransformMakeScale(stretch.x, stretch.y);
  CGContextRef const context = NSGraphicsContext.currentContext.CGContext;
  _tree->visit([&](const auto& node, const CGAffineTransform& toPanel) {
    const auto transform = CGAffineTransformConcat(toPanel, toCanvas);
    if (!CGRectIntersectsRect(CGRectApplyAffineTransform(node->extent(), transform), dirtyRect))
      return;
    CGContextSaveGState(context);
    CGContextConcatCTM(context, transform);
    const bool isPressed = node == _pressed && node->isHovered;
    pellow::drawView(*node, stretch, isPressed);
    CGContextRestoreGState(context);
  });
}

- (void)viewDidChangeBackingProperties {
  [super viewDidChangeBackingProperties];
  self.needsDisplay = YES;
}

- (void)viewDidChangeEffectiveAppearance {
  [super viewDidChangeEffectiveAppearance];
  self.needsDisplay = YES;
}

@end
