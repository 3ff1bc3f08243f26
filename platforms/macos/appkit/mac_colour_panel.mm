#include "platforms/macos/appkit/mac_colour_panel.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <utility>

#include "platforms/macos/foundation/colour.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/windows/foreground.h"

namespace {

// Of one call of `show`, alive as long as its subscription.
struct Showing {
  std::function<void(pellow::Colour)> onChange;
};

}  // namespace

// Shows the colour panel and hears from it; the panel does not keep its target.
@interface PellowColourListener : NSObject
- (void)show:(pellow::Colour)colour for:(const std::shared_ptr<Showing>&)showing;
// Hides the panel if this is what it still shows.
- (void)end:(const std::shared_ptr<Showing>&)showing;
- (void)stop;
@end

@implementation PellowColourListener {
  std::weak_ptr<Showing> _current;  // also empty once the user has closed the panel
  pellow::Foreground _foreground;
}

// A panel that has its target would tell it of the first colour, too.
- (void)show:(pellow::Colour)colour for:(const std::shared_ptr<Showing>&)showing {
  [self stop];
  NSColorPanel* const panel = NSColorPanel.sharedColorPanel;
  panel.color = pellow::toNSColor(colour);
  panel.continuous = YES;
  panel.hidesOnDeactivate = NO;
  panel.collectionBehavior =
      NSWindowCollectionBehaviorMoveToActiveSpace | NSWindowCollectionBehaviorFullScreenAuxiliary;
  _current = showing;
  [panel setTarget:self];
  [panel setAction:@selector(colourChanged:)];
  [NSNotificationCenter.defaultCenter addObserver:self
                                         selector:@selector(panelWillClose:)
                                             name:NSWindowWillCloseNotification
                                           object:panel];
  _foreground.take(panel);
}

- (void)stop {
  _current.reset();
  if (!NSColorPanel.sharedColorPanelExists) return;
  [NSColorPanel.sharedColorPanel setTarget:nil];
  [NSColorPanel.sharedColorPanel setAction:nullptr];
  [NSNotificationCenter.defaultCenter removeObserver:self];
}

- (void)end:(const std::shared_ptr<Showing>&)showing {
  if (_current.lock() != showing) return;
  [self stop];
  [NSColorPanel.sharedColorPanel orderOut:nil];
  [self giveBackSoon];
}

// By then another window of ours may have the keyboard.
- (void)giveBackSoon {
  __weak PellowColourListener* const weakSelf = self;
  pellow::hopToMain([weakSelf] { [weakSelf giveBack]; });
}

- (void)giveBack {
  if (!NSApp.keyWindow) _foreground.giveBack();
}

- (void)colourChanged:(NSColorPanel*)panel {
  const auto showing = _current.lock();
  const auto colour = pellow::toColour(panel.color);
  if (!showing || !colour) return;
  pellow::runInPool([showing, colour = *colour] { showing->onChange(colour); });
}

- (void)panelWillClose:(NSNotification*)__unused notification {
  [self stop];
  [self giveBackSoon];
}

@end

namespace pellow {

MacColourPanel::MacColourPanel() : listener_([[PellowColourListener alloc] init]) {}

MacColourPanel::~MacColourPanel() { [listener_ stop]; }

Subscription MacColourPanel::show(Colour colour, std::function<void(Colour)> onChange) {
  const auto showing = std::make_shared<Showing>(std::move(onChange));
  [listener_ show:colour for:showing];
  return Subscription([listener = listener_, showing] { [listener end:showing]; });
}

}  // namespace pellow
