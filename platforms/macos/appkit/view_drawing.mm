#include "platforms/macos/appkit/view_drawing.h"

#include <algorithm>
#include <cmath>
#include <variant>

#include "platforms/macos/appkit/one_line.h"
#include "platforms/macos/foundation/colour.h"
#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/image.h"
#include "platforms/macos/foundation/symbol.h"

namespace pellow {
namespace {

// Opacities over a view under the pointer and over one that is being clicked.
constexpr double hoverOnLight = 0.08;
constexpr double hoverOnDark = 0.11;
constexpr double pressedOnLight = 0.16;
constexpr double pressedOnDark = 0.19;

NSRect boundsOf(const ViewNode& node) { return toNSRect(node.bounds()); }

// The radius is the panel's, even while its content is drawn stretched.
NSBezierPath* rounded(NSRect area, double radius, Stretch stretch) {
  return [NSBezierPath bezierPathWithRoundedRect:area
                                         xRadius:radius / stretch.x
                                         yRadius:radius / stretch.y];
}

// On whole device pixels a picture stays sharp.
NSRect alignedToPixels(NSRect area) {
  CGContextRef const context = NSGraphicsContext.currentContext.CGContext;
  const CGAffineTransform toDevice = CGContextGetUserSpaceToDeviceSpaceTransform(context);
  if (toDevice.b != 0 || toDevice.c != 0) return area;
  CGPoint corner = CGPointApplyAffineTransform(area.origin, toDevice);
  corner = CGPointMake(std::round(corner.x), std::round(corner.y));
  area.origin = CGPointApplyAffineTransform(corner, CGAffineTransformInvert(toDevice));
  return area;
}

void drawImage(NSImage* image, NSRect area) {
  [image drawInRect:area
            fromRect:NSZeroRect
           operation:NSCompositingOperationSourceOver
            fraction:1
      respectFlipped:YES
               hints:@{
                 NSImageHintInterpolation : @(NSImageInterpolationHigh)
               }];
}

void drawPicture(const ViewNode& node, const Picture& picture, Stretch stretch) {
  NSImage* const image = toNSImage(picture.image);
  const NSRect area = fitted(image.size, boundsOf(node));
  if (NSIsEmptyRect(area)) return;
  if (node.look.cornerRadius > 0) {
    [rounded(area, node.look.cornerRadius, stretch) addClip];
    return drawImage(image, area);
  }
  drawImage(image, alignedToPixels(area));
}

// A template image is black when it is drawn; its shape takes the colour.
void drawSymbol(const ViewNode& node, const Symbol& symbol) {
  NSImage* const image = symbolImage(symbol.name);
  const NSRect area = fitted(image.size, boundsOf(node));
  if (NSIsEmptyRect(area)) return;
  CGContextRef const context = NSGraphicsContext.currentContext.CGContext;
  CGContextBeginTransparencyLayerWithRect(context, boundsOf(node), nullptr);
  drawImage(image, area);
  [toNSColor(symbol.paint) setFill];
  NSRectFillUsingOperation(boundsOf(node), NSCompositingOperationSourceIn);
  CGContextEndTransparencyLayer(context);
}

NSDictionary<NSAttributedStringKey, id>* attributesOf(const Label& label) {
  NSMutableParagraphStyle* const style = [[NSMutableParagraphStyle alloc] init];
  style.lineBreakMode = NSLineBreakByTruncatingTail;
  style.alignment =
      label.alignment == TextAlignment::centre ? NSTextAlignmentCenter : NSTextAlignmentLeft;
  const NSFontWeight weight =
      label.weight == FontWeight::medium ? NSFontWeightMedium : NSFontWeightRegular;
  return @{
    NSFontAttributeName : [NSFont systemFontOfSize:label.pointSize weight:weight],
    NSForegroundColorAttributeName : toNSColor(label.paint),
    NSParagraphStyleAttributeName : style,
  };
}

void drawLabel(const ViewNode& node, const Label& label) {
  NSString* const text = toOneLine(label.text);
  NSDictionary<NSAttributedStringKey, id>* const attributes = attributesOf(label);
  const NSRect bounds = boundsOf(node);
  const double height = std::ceil([text sizeWithAttributes:attributes].height);
  [text drawInRect:NSMakeRect(0, (bounds.size.height - height) / 2, bounds.size.width, height)
      withAttributes:attributes];
}

void drawContent(const ViewNode& node, Stretch stretch) {
  const auto& content = node.look.content;
  if (const auto* picture = std::get_if<Picture>(&content))
    return drawPicture(node, *picture, stretch);
  if (const auto* symbol = std::get_if<Symbol>(&content)) return drawSymbol(node, *symbol);
  if (const auto* label = std::get_if<Label>(&content)) return drawLabel(node, *label);
  if (const auto* fill = std::get_if<Fill>(&content)) {
    [toNSColor(fill->paint) setFill];
    [rounded(boundsOf(node), node.look.cornerRadius, stretch) fill];
  }
}

void drawWithShadow(const ViewNode& node, const Shadow& shadow, Stretch stretch) {
  NSShadow* const cast = [[NSShadow alloc] init];
  cast.shadowColor = [NSColor.blackColor colorWithAlphaComponent:shadow.opacity];
  cast.shadowBlurRadius = shadow.blurRadius;
  cast.shadowOffset = NSMakeSize(shadow.dx, shadow.dy);
  [cast set];
  CGContextRef const context = NSGraphicsContext.currentContext.CGContext;
  CGContextBeginTransparencyLayer(context, nullptr);
  drawContent(node, stretch);
  CGContextEndTransparencyLayer(context);
}

bool isDark() {
  NSAppearanceName const match = [NSAppearance.currentDrawingAppearance
      bestMatchFromAppearancesWithNames:@[ NSAppearanceNameAqua, NSAppearanceNameDarkAqua ]];
  return [match isEqualToString:NSAppearanceNameDarkAqua];
}

void drawHighlight(const ViewNode& node, Stretch stretch, bool isPressed) {
  if (node.highlight <= 0) return;
  const double onLight = isPressed ? pressedOnLight : hoverOnLight;
  const double onDark = isPressed ? pressedOnDark : hoverOnDark;
  NSColor* const colour = isDark() ? [NSColor colorWithWhite:1 alpha:onDark * node.highlight]
                                   : [NSColor colorWithWhite:0 alpha:onLight * node.highlight];
  [colour setFill];
  [rounded(boundsOf(node), node.look.cornerRadius, stretch) fill];
}

}  // namespace

NSRect fitted(NSSize size, NSRect area) {
  if (size.width <= 0 || size.height <= 0) return NSZeroRect;
  const double scale = std::min(area.size.width / size.width, area.size.height / size.height);
  const NSSize shown = NSMakeSize(size.width * scale, size.height * scale);
  return NSMakeRect(NSMidX(area) - shown.width / 2, NSMidY(area) - shown.height / 2, shown.width,
                    shown.height);
}

void drawView(const ViewNode& node, Stretch stretch, bool isPressed) {
  [NSGraphicsContext saveGraphicsState];
  if (node.look.shadow) {
    drawWithShadow(node, *node.look.shadow, stretch);
  } else {
    drawContent(node, stretch);
  }
  [NSGraphicsContext restoreGraphicsState];
  if (node.look.highlightsOnHover) drawHighlight(node, stretch, isPressed);
}

}  // namespace pellow
