#include "platforms/macos/appkit/panel_content.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "platforms/macos/appkit/highlights.h"
#include "platforms/macos/appkit/mac_menu.h"
#include "platforms/macos/appkit/tool_tips.h"
#include "platforms/macos/appkit/underlay.h"
#include "platforms/macos/appkit/view_canvas.h"
#include "platforms/macos/appkit/view_element.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"

using pellow::DragActions;
using pellow::Menu;
using pellow::ViewNode;
using pellow::ViewTree;

namespace {

constexpr double dragThreshold = 3;    // points
constexpr std::size_t manyParts = 64;  // so many that all is drawn anew

using Nodes = std::vector<std::shared_ptr<ViewNode>>;
using WeakNodes = std::vector<std::weak_ptr<ViewNode>>;

// A press that becomes a drag once the pointer has moved far enough.
struct Drag {
  DragActions actions;  // of the view that was pressed, whatever becomes of it
  NSPoint from;         // on the screen
  bool hasBegun = false;
};

bool contains(const Nodes& nodes, const std::shared_ptr<ViewNode>& node) {
  return std::ranges::find(nodes, node) != nodes.end();
}

// The innermost node at a point for which `has` holds; empty when there is none.
template <class Has>
std::shared_ptr<ViewNode> innermost(const Nodes& nodes, Has has) {
  const auto found =
      std::find_if(nodes.rbegin(), nodes.rend(), [&](const auto& node) { return has(*node); });
  return found == nodes.rend() ? nullptr : *found;
}

}  // namespace

@implementation PellowPanelContent {
  std::function<void()> _onPointerMoved;
  std::shared_ptr<ViewTree> _tree;
  PellowViewCanvas* _canvas;
  std::optional<pellow::Underlay> _underlay;
  std::optional<pellow::Highlights> _highlights;
  pellow::ToolTips _toolTips;
  bool _givenUp;
  bool _willLookForPointer;
  std::shared_ptr<ViewNode> _pressed;
  std::optional<Drag> _drag;
  NSMenu* _contextMenu;  // the latest: a choice may come after it has closed
}

- (instancetype)initWithPointerMoved:(std::function<void()>)onPointerMoved {
  if (!(self = [super initWithFrame:NSZeroRect])) return nil;
  self.wantsLayer = YES;
  _onPointerMoved = std::move(onPointerMoved);
  _tree = std::make_shared<ViewTree>();
  _canvas = [[PellowViewCanvas alloc] initWithTree:_tree];
  [self addSubview:_canvas];
  _underlay.emplace(self, _canvas);
  _highlights.emplace(_tree, _canvas);
  [self addTrackingArea:[[NSTrackingArea alloc]
                            initWithRect:NSZeroRect
                                 options:NSTrackingMouseEnteredAndExited | NSTrackingMouseMoved |
                                         NSTrackingActiveAlways | NSTrackingInVisibleRect |
                                         NSTrackingEnabledDuringMouseDrag
                                   owner:self
                                userInfo:nil]];
  return self;
}

- (void)showViews:(pellow::View)root {
  const auto parts = _tree->update(std::move(root));
  if (parts.size() > manyParts) {
    _canvas.needsDisplay = YES;
  } else {
    for (const auto& part : parts) [_canvas contentNeedsDisplayIn:part];
  }
  if (parts.empty()) return;
  [self arrangeContent];
  NSAccessibilityPostNotification(self, NSAccessibilityLayoutChangedNotification);
}

- (void)giveUp {
  _givenUp = true;
  _drag.reset();
  _highlights->end();
  [_contextMenu cancelTracking];
}

- (void)panelWasHidden {
  [self pressNode:nullptr];
  [self endDrag];
  [self lookForPointerSoon];
}

// The callback may replace its own view, and itself with it.
- (void)callBack:(const std::function<void()>&)callback {
  if (!_givenUp && callback) pellow::runInPool(callback);
}

// Layout

- (void)setFrameSize:(NSSize)size {
  const bool changes = !NSEqualSizes(size, self.frame.size);
  [super setFrameSize:size];
  if (changes) [self arrangeContent];
}

// After a change of the content or the size.
- (void)arrangeContent {
  _canvas.frame = self.bounds;
  if (const auto& root = _tree->root()) _underlay->show(*root, _canvas.stretch);
  [self.window invalidateShadow];
  _toolTips.show(*_tree, [self toPanel], self);
  [self lookForPointerSoon];
}

- (CGAffineTransform)toPanel {
  const auto stretch = _canvas.stretch;
  return CGAffineTransformMakeScale(stretch.x, stretch.y);
}

- (Nodes)nodesAt:(NSPoint)point {
  return _tree->at(CGPointApplyAffineTransform(point, CGAffineTransformInvert([self toPanel])));
}

- (Nodes)nodesAtEvent:(NSEvent*)event {
  return [self nodesAt:[self convertPoint:event.locationInWindow fromView:nil]];
}

// Pointer

- (NSView*)hitTest:(NSPoint)point {
  return [super hitTest:point] ? self : nil;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)__unused event {
  return YES;
}

- (void)mouseDown:(NSEvent*)event {
  [self endDrag];  // its end may have been lost
  if (event.modifierFlags & NSEventModifierFlagControl) return [self showContextMenu:event];
  const auto nodes = [self nodesAtEvent:event];
  [self pressNode:innermost(nodes, [](const auto& each) { return bool(each.actions.onClick); })];
  if (const auto node = innermost(nodes, [](const auto& each) { return bool(each.actions.drag); }))
    _drag = Drag{node->actions.drag, NSEvent.mouseLocation};
}

- (void)mouseDragged:(NSEvent*)event {
  if (_drag) [self dragTo:NSEvent.mouseLocation];
  if (![self dragHasBegun])
    [self pointerIsAt:[self convertPoint:event.locationInWindow fromView:nil]];
}

- (void)mouseUp:(NSEvent*)event {
  if ([self dragHasBegun]) {
    [self lookForPointerSoon];
    return [self endDrag];
  }
  _drag.reset();
  const auto node = _pressed;
  [self pressNode:nullptr];
  if (node && contains([self nodesAtEvent:event], node)) [self clickNode:node];
}

- (void)rightMouseDown:(NSEvent*)event {
  if (!_drag) [self showContextMenu:event];
}

- (void)mouseEntered:(NSEvent*)event {
  [self mouseMoved:event];
}

- (void)mouseMoved:(NSEvent*)event {
  [self callBack:_onPointerMoved];
  if (![self dragHasBegun])
    [self pointerIsAt:[self convertPoint:event.locationInWindow fromView:nil]];
}

- (void)mouseExited:(NSEvent*)__unused event {
  if (![self dragHasBegun]) [self pointerIsAt:std::nullopt];
}

- (void)pressNode:(std::shared_ptr<ViewNode>)node {
  const auto before = std::exchange(_pressed, std::move(node));
  _canvas.pressed = _pressed;
  for (const auto& changed : {before, _pressed})
    if (changed) [_canvas contentNeedsDisplayIn:_tree->areaOf(*changed)];
}

- (void)clickNode:(const std::shared_ptr<ViewNode>&)node {
  [self callBack:node->actions.onClick];
}

// Drags

- (bool)dragHasBegun {
  return _drag && _drag->hasBegun;
}

- (void)dragTo:(NSPoint)point {
  const pellow::AppKitVector movedBy{point.x - _drag->from.x, point.y - _drag->from.y};
  const auto actions = _drag->actions;
  if (!_drag->hasBegun) {
    if (std::hypot(movedBy.dx, movedBy.dy) < dragThreshold) return;
    _drag->hasBegun = true;
    [self pressNode:nullptr];
    [self callBack:actions.onBegan];
  }
  if (_drag && actions.onDragged) [self callBack:[&] { actions.onDragged(movedBy); }];
}

- (void)endDrag {
  const auto drag = std::exchange(_drag, std::nullopt);
  if (drag && drag->hasBegun) [self callBack:drag->actions.onEnded];
}

// Context menus

- (void)showContextMenu:(NSEvent*)event {
  const auto node = innermost([self nodesAtEvent:event],
                              [](const auto& each) { return bool(each.actions.contextMenu); });
  if (!node) return;
  Menu menu;
  [self callBack:[&menu, contextMenu = node->actions.contextMenu] { menu = contextMenu(); }];
  if (_givenUp || menu.items.empty()) return;
  [self pressNode:nullptr];  // the menu gets the release
  __weak PellowPanelContent* const weakSelf = self;
  NSMenu* const shown =
      pellow::makeMenu(menu, [weakSelf](const auto& chosen) { [weakSelf callBack:chosen]; });
  _contextMenu = shown;
  [NSMenu popUpContextMenu:shown withEvent:event forView:self];
  [self lookForPointerSoon];
}

// Hover

- (void)lookForPointerSoon {
  if (std::exchange(_willLookForPointer, true)) return;
  __weak PellowPanelContent* const weakSelf = self;
  pellow::hopToMain([weakSelf] { [weakSelf lookForPointer]; });
}

- (void)lookForPointer {
  _willLookForPointer = false;
  if ([self dragHasBegun]) return;
  NSWindow* const window = self.window;
  const NSPoint point = [self convertPoint:window.mouseLocationOutsideOfEventStream fromView:nil];
  const bool isAbove =
      window.visible && !window.ignoresMouseEvents && NSPointInRect(point, self.bounds);
  const bool inside = isAbove && [NSWindow windowNumberAtPoint:NSEvent.mouseLocation
                                     belowWindowWithWindowNumber:0] == window.windowNumber;
  [self pointerIsAt:inside ? std::optional(point) : std::nullopt];
}

- (void)pointerIsAt:(std::optional<NSPoint>)point {
  if (_givenUp) return;
  WeakNodes left;
  WeakNodes entered;
  _tree->visit([&, now = point ? [self nodesAt:*point] : Nodes()](
                   const std::shared_ptr<ViewNode>& node, const CGAffineTransform&) {
    const bool inside = contains(now, node);
    if (inside == node->isHovered) return;
    node->isHovered = inside;
    (inside ? entered : left).push_back(node);
  });
  if (left.empty() && entered.empty()) return;
  std::ranges::reverse(left);  // from the inside out
  _highlights->begin();
  [self tellHover:left inside:false];
  [self tellHover:entered inside:true];
}

// A callback may take other views away.
- (void)tellHover:(const WeakNodes&)nodes inside:(bool)inside {
  for (const auto& weak : nodes) {
    const auto node = weak.lock();
    if (!node || !node->actions.onHoverChanged) continue;
    [self callBack:[onHoverChanged = node->actions.onHoverChanged, inside] {
      onHoverChanged(inside);
    }];
  }
}

// Tool tips

// One view with a tool tip may stand on another.
- (NSString*)view:(NSView*)__unused view
    stringForToolTip:(NSToolTipTag)__unused tag
               point:(NSPoint)point
            userData:(void*)__unused data {
  const auto node =
      innermost([self nodesAt:point], [](const auto& each) { return !each.look.tooltip.empty(); });
  return node ? pellow::toNSString(node->look.tooltip) : @"";
}

// Accessibility

- (BOOL)isAccessibilityElement {
  return YES;
}

- (NSAccessibilityRole)accessibilityRole {
  return NSAccessibilityToolbarRole;
}

- (NSArray*)accessibilityChildren {
  NSMutableArray* const children = [[NSMutableArray alloc] init];
  _tree->visit([&](const auto& node, const CGAffineTransform&) {
    if (!node->look.accessibleName.empty()) [children addObject:[self elementOf:node]];
  });
  return children;
}

- (id)accessibilityHitTest:(NSPoint)onScreen {
  const NSPoint inWindow = [self.window convertPointFromScreen:onScreen];
  const auto node = innermost([self nodesAt:[self convertPoint:inWindow fromView:nil]],
                              [](const auto& each) { return !each.look.accessibleName.empty(); });
  return node ? [self elementOf:node] : self;
}

- (id)elementOf:(const std::shared_ptr<ViewNode>&)node {
  if (!node->accessible)
    node->accessible = [[PellowViewElement alloc] initWithNode:node panel:self];
  return node->accessible;
}

- (NSRect)frameOnScreen:(const ViewNode&)node {
  const CGRect area = _tree->areaOf(node);
  if (CGRectIsNull(area)) return NSZeroRect;
  const NSRect inView = CGRectApplyAffineTransform(area, [self toPanel]);
  return [self.window convertRectToScreen:[self convertRect:inView toView:nil]];
}

@end
