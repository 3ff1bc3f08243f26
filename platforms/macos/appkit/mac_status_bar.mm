#include "platforms/macos/appkit/mac_status_bar.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <utility>

#include "platforms/macos/appkit/mac_menu.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/symbol.h"
#include "platforms/macos/foundation/text.h"

// Fills the menu of a status item each time it opens.
@interface PellowMenuFiller : NSObject <NSMenuDelegate>
// An empty one: nothing is filled in, and nothing that is still to be seen can be chosen.
- (void)setProvider:(std::function<pellow::Menu()>)provider;
@end

@implementation PellowMenuFiller {
  std::function<pellow::Menu()> _provider;
}

- (void)setProvider:(std::function<pellow::Menu()>)provider {
  _provider = std::move(provider);
}

- (void)menuNeedsUpdate:(NSMenu*)menu {
  [menu removeAllItems];
  if (!_provider) return;
  __weak PellowMenuFiller* const weakSelf = self;
  pellow::runInPool([menu, weakSelf, provider = _provider] {
    pellow::fillMenu(menu, provider(),
                     [weakSelf](const auto& onChosen) { [weakSelf choose:onChosen]; });
  });
}

- (void)choose:(const std::function<void()>&)onChosen {
  if (_provider) onChosen();
}

@end

namespace pellow {
namespace {

constexpr double badgeShare = 0.4;  // of the picture's smaller side
constexpr double gapShare = 0.07;   // around the badge

NSImage* badged(NSImage* symbol) {
  return [NSImage imageWithSize:symbol.size
                        flipped:NO
                 drawingHandler:^BOOL(NSRect area) {
                   const double side = std::min(area.size.width, area.size.height);
                   const double diameter = badgeShare * side;
                   const double gap = gapShare * side;
                   const NSRect badge = NSMakeRect(NSMaxX(area) - diameter, NSMaxY(area) - diameter,
                                                   diameter, diameter);
                   NSGraphicsContext* const context = NSGraphicsContext.currentContext;
                   // Clears the symbol only, not what the picture is drawn upon.
                   CGContextBeginTransparencyLayer(context.CGContext, nullptr);
                   [symbol drawInRect:area];
                   [NSColor.blackColor setFill];
                   context.compositingOperation = NSCompositingOperationClear;
                   [[NSBezierPath bezierPathWithOvalInRect:NSInsetRect(badge, -gap, -gap)] fill];
                   context.compositingOperation = NSCompositingOperationSourceOver;
                   [[NSBezierPath bezierPathWithOvalInRect:badge] fill];
                   CGContextEndTransparencyLayer(context.CGContext);
                   return YES;
                 }];
}

NSImage* templateImage(const StatusImage& image) {
  NSImage* const symbol = symbolImage(image.symbol, nil, image.accessibilityDescription);
  if (!image.isBadged || !symbol) return symbol;
  NSImage* const result = badged(symbol);
  [result setTemplate:YES];
  result.accessibilityDescription = toNSString(image.accessibilityDescription);
  return result;
}

}  // namespace

class MacStatusBar::MacStatusItem final : public StatusItem {
 public:
  MacStatusItem() {
    menu_.delegate = filler_;
    item_.menu = menu_;
  }

  // One of its own items may be what ends it.
  ~MacStatusItem() override {
    [filler_ setProvider:nullptr];
    [menu_ cancelTracking];
    [NSStatusBar.systemStatusBar removeStatusItem:item_];
    keepUntilIdle(menu_);
  }

  void setImage(const StatusImage& image) override { item_.button.image = templateImage(image); }

  void setTooltip(const std::string& tooltip) override {
    item_.button.toolTip = tooltip.empty() ? nil : toNSString(tooltip);
  }

  void setMenu(std::function<Menu()> menu) override { [filler_ setProvider:std::move(menu)]; }

  // The menu bar is always there; whether it has room, nobody tells.
  bool isShown() const override { return true; }

 private:
  NSStatusItem* const item_ =
      [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
  NSMenu* const menu_ = [[NSMenu alloc] initWithTitle:@""];
  PellowMenuFiller* const filler_ = [[PellowMenuFiller alloc] init];  // the menu does not keep it
};

std::unique_ptr<StatusItem> MacStatusBar::makeStatusItem() {
  return std::make_unique<MacStatusItem>();
}

}  // namespace pellow
