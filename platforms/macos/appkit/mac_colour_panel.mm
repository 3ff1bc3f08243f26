#include "platforms/macos/appkit/mac_colour_panel.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <utility>

#include "platforms/macos/foundation/colour.h"
#include "platforms/macos/foundation/foreground.h"
#include "platforms/macos/foundation/main_queue.h"

namespace {

// Of one call of `show`, alive as long as its subscription.
struct Showing {
  std::function<void(pellow::Colour)> onChange;
};

}  // namespace

// Shows the colour panel and hears from it; the panel does not keep its target.
@interface PellowColourListener : NSObject
- (instancetype)initWithForeground:(std::shared_ptr<pellow::Foreground>)foreground;
- (void)show:(pellow::Colour)colour for:(const std::shared_ptr<Showing>&)showing;
// Hides the panel if this is what it still shows.
- (void)end:(const std::shared_ptr<Showing>&)showing;
- (void)stop;
@end

@implementation PellowColourListener {
  std::weak_ptr<Showing> _current;  // also empty once the user has closed the panel
  std::shared_ptr<pellow::Foreground> _foreground;
}

- (instancetype)initWithForeground:(std::shared_ptr<pellow::Foreground>)foreground {
  if ((self = [super init])) _foreground = std::move(foreground);
  return self;
}

// A panel that has its target would tell it of the first colour, too.
- (void)show:(pellow::Colour)colour for:(const std::shared_ptr<Showing>&)showing {
  [self stop];
  NSColorPanel* const panel = NSColorPanel.sharedColorPanel;
  panel.color = pellow::toNSColor(colour);
  panel.continuous = YES;
  panel.hidesOnDeactivate = NO;
  panel.acceptsMouseMovedEvents = YES;  // for the local monitors
  panel.collectionBehavior =
      NSWindowCollectionBehaviorMoveToActiveSpace | NSWindowCollectionBehaviorFullScreenAuxiliary;
  _current = showing;
  [panel setTarget:self];
  [panel setAction:@selector(colourChanged:)];
  [NSNotificationCenter.defaultCenter addObserver:self
                                         selector:@selector(panelWillClose:)
                                             name:NSWindowWillCloseNotification
                                           object:panel];
  _foreground->take(panel);
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
  _foreground->giveBackLater();
}

- (void)colourChanged:(NSColorPanel*)panel {
  const auto showing = _current.lock();
  const auto colour = pellow::toColour(panel.color);
  if (!showing || !colour) return;
  pellow::runInPool([showing, colour = *colour] { showing->onChange(colour); });
}

- (void)panelWillClose:(NSNotification*)__unused notification {
  [self stop];
  _foreground->giveBackLater();
}

@end

namespace pellow {

MacColourPanel::MacColourPanel(std::shared_ptr<Foreground> foreground)
    : listener_([[PellowColourListener alloc] initWithForeground:std::move(foreground)]) {}

MacColourPanel::~MacColourPanel() { [listener_ stop]; }

Subscription MacColourPanel::show(Colour colour, std::function<void(Colour)> onChange) {
  const auto showing = std::make_shared<Showing>(std::move(onChange));
  [listener_ show:colour for:showing];
  return Subscription([listener = listener_, showing] { [listener end:showing]; });
}

}  // namespace pellow
