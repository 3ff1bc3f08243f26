#include "platforms/macos/appkit/view_canvas.h"

#include <utility>

#include "platforms/macos/appkit/view_drawing.h"
#include "platforms/macos/foundation/geometry.h"

@implementation PellowViewCanvas {
  std::shared_ptr<const pellow::ViewTree> _tree;
  std::shared_ptr<const pellow::PanelPointer> _pointer;
}

- (instancetype)initWithTree:(std::shared_ptr<const pellow::ViewTree>)tree
                     pointer:(std::shared_ptr<const pellow::PanelPointer>)pointer {
  if ((self = [super initWithFrame:NSZeroRect])) {
    _tree = std::move(tree);
    _pointer = std::move(pointer);
  }
  return self;
}

- (pellow::Stretch)stretch {
  return _tree->stretchTo(pellow::toSize(self.bounds.size));
}

- (void)contentNeedsDisplayIn:(const pellow::ViewRect&)area {
  const NSRect drawn = pellow::toNSRect(self.stretch.toPanel(area));
  [self setNeedsDisplayInRect:NSIntegralRect(NSInsetRect(drawn, -1, -1))];
}

- (void)drawRect:(NSRect)dirtyRect {
  const auto stretch = self.stretch;
  CGContextRef const context = NSGraphicsContext.currentContext.CGContext;
  _tree->visit([&](const auto& node, const pellow::ViewTransform& toContent) {
    const NSRect drawn = pellow::toNSRect(stretch.toPanel(toContent.map(node->extent())));
    if (!NSIntersectsRect(drawn, dirtyRect)) return;
    const auto& [a, b, c, d, tx, ty] = toContent;
    CGContextSaveGState(context);
    CGContextScaleCTM(context, stretch.x, stretch.y);
    CGContextConcatCTM(context, CGAffineTransformMake(a, b, c, d, tx, ty));
    pellow::drawView(*node, stretch, _pointer->isPressing(*node));
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
