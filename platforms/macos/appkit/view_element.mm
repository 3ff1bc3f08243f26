#include "platforms/macos/appkit/view_element.h"

#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"

@implementation PellowViewElement {
  std::weak_ptr<pellow::ViewNode> _node;
  __weak PellowPanelContent* _panel;
}

- (instancetype)initWithNode:(const std::shared_ptr<pellow::ViewNode>&)node
                       panel:(PellowPanelContent*)panel {
  if ((self = [super init])) {
    _node = node;
    _panel = panel;
  }
  return self;
}

- (bool)canBeClicked {
  const auto node = _node.lock();
  return node && node->actions.onClick;
}

- (BOOL)isAccessibilityElement {
  return YES;
}

- (id)accessibilityParent {
  return _panel;
}

- (NSAccessibilityRole)accessibilityRole {
  return [self canBeClicked] ? NSAccessibilityButtonRole : NSAccessibilityImageRole;
}

- (NSString*)accessibilityLabel {
  const auto node = _node.lock();
  return node ? pellow::toNSString(node->look.accessibleName) : nil;
}

- (NSString*)accessibilityHelp {
  const auto node = _node.lock();
  return node && !node->look.tooltip.empty() ? pellow::toNSString(node->look.tooltip) : nil;
}

- (NSRect)accessibilityFrame {
  const auto node = _node.lock();
  PellowPanelContent* const panel = _panel;
  return node && panel ? [panel frameOnScreen:*node] : NSZeroRect;
}

- (BOOL)isAccessibilitySelectorAllowed:(SEL)selector {
  if (selector == @selector(accessibilityPerformPress)) return [self canBeClicked];
  return [super isAccessibilitySelectorAllowed:selector];
}

// Whoever asks waits for the answer, and may be what the action is about to ask.
- (BOOL)accessibilityPerformPress {
  PellowPanelContent* const panel = _panel;
  if (!panel || ![self canBeClicked]) return NO;
  pellow::hopToMain([weak = _node, panel] {
    if (const auto node = weak.lock()) [panel clickNode:node];
  });
  return YES;
}

@end
