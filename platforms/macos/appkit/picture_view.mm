#include "platforms/macos/appkit/picture_view.h"

#import <QuartzCore/QuartzCore.h>

#include "platforms/macos/appkit/view_drawing.h"

@implementation PellowPictureView

- (instancetype)initWithFrame:(NSRect)frame {
  if ((self = [super initWithFrame:frame])) {
    self.wantsLayer = YES;
    self.clipsToBounds = YES;
    self.layerContentsRedrawPolicy = NSViewLayerContentsRedrawOnSetNeedsDisplay;
    self.layerContentsPlacement = NSViewLayerContentsPlacementScaleProportionallyToFit;
  }
  return self;
}

- (void)setImage:(NSImage*)image {
  if (_image == image) return;
  _image = image;
  self.needsDisplay = YES;
}

- (void)setMaskRadius:(double)maskRadius {
  if (_maskRadius == maskRadius) return;
  _maskRadius = maskRadius;
  self.needsDisplay = YES;
}

- (void)setLargestSize:(NSSize)largestSize {
  if (NSEqualSizes(_largestSize, largestSize)) return;
  _largestSize = largestSize;
  self.needsDisplay = YES;
}

- (void)viewDidChangeBackingProperties {
  [super viewDidChangeBackingProperties];
  self.needsDisplay = YES;
}

- (BOOL)wantsUpdateLayer {
  return YES;
}

- (void)updateLayer {
  CALayer* const layer = self.layer;
  layer.cornerRadius = self.maskRadius;
  layer.cornerCurve = kCACornerCurveContinuous;
  layer.contents = (__bridge id)[self bitmap];
}

// Of the icons that one image holds, the one that stays sharp.
- (CGImageRef)bitmap {
  const double scale = self.window ? self.window.backingScaleFactor : 1;
  NSRect pixels = pellow::fitted(self.image.size, NSMakeRect(0, 0, self.largestSize.width * scale,
                                                             self.largestSize.height * scale));
  if (NSIsEmptyRect(pixels)) return nullptr;
  return [self.image CGImageForProposedRect:&pixels
                                    context:nil
                                      hints:@{NSImageHintCTM : [NSAffineTransform transform]}];
}

@end
