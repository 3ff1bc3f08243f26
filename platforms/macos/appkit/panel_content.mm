#include "platforms/macos/appkit/panel_content.h"

#include <optional>
#include <utility>

#include "platforms/macos/appkit/highlights.h"
#include "platforms/macos/appkit/mac_menu.h"
#include "platforms/macos/appkit/tool_tips.h"
#include "platforms/macos/appkit/underlay.h"
#include "platforms/macos/appkit/view_canvas.h"
#include "platforms/macos/appkit/view_element.h"
#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/foundation/text.h"
#include "views/panel_pointer.h"

using pellow::PanelPointer;
using pellow::ViewNode;
using pellow::ViewPoint;
using pellow::ViewTransform;
using pellow::ViewTree;

namespace {

// What assistive programs have been given for a view.
struct GivenElement final : ViewNode::NativePart {
  PellowViewElement* element = nil;
};

}  // namespace

@implementation PellowPanelContent {
  std::function<void()> _onPointerMoved;
  std::shared_ptr<ViewTree> _tree;
  std::shared_ptr<PanelPointer> _pointer;
  PellowViewCanvas* _canvas;
  std::optional<pellow::Underlay> _underlay;
  std::optional<pellow::Highlights> _highlights;
  pellow::ToolTips _toolTips;
  NSMenu* _contextMenu;  // the latest: a choice may come after it has closed
}

- (instancetype)initWithPointerMoved:(std::function<void()>)onPointerMoved {
  if (!(self = [super initWithFrame:NSZeroRect])) return nil;
  self.wantsLayer = YES;
  _onPointerMoved = std::move(onPointerMoved);
  _tree = std::make_shared<ViewTree>();
  _pointer = std::make_shared<PanelPointer>(*_tree);
  _canvas = [[PellowViewCanvas alloc] initWithTree:_tree pointer:_pointer];
  [self addSubview:_canvas];
  _underlay.emplace(self, _canvas);
  _highlights.emplace([pointer = _pointer.get()](pellow::Seconds elapsed) {
    return pointer->advanceHighlights(elapsed);
  });
  __weak PellowViewCanvas* const canvas = _canvas;
  _pointer->onNeedsDisplay = [canvas](const auto& area) { [canvas contentNeedsDisplayIn:area]; };
  _pointer->onHighlightsBegin = [highlights = &*_highlights] { highlights->begin(); };
  _pointer->onNeedsPointer = [] { [PellowPanelContent lookForPointerSoon]; };
  [self addTrackingArea:[[NSTrackingArea alloc]
                            initWithRect:NSZeroRect
                                 options:NSTrackingMouseEnteredAndExited | NSTrackingMouseMoved |
                                         NSTrackingActiveAlways | NSTrackingInVisibleRect |
                                         NSTrackingEnabledDuringMouseDrag
                                   owner:self
                                userInfo:nil]];
  return self;
}

- (void)showViews:(const pellow::View&)root {
  const auto parts = _tree->update(root);
  for (const auto& part : parts) [_canvas contentNeedsDisplayIn:part];
  if (parts.empty()) return;
  [self arrangeContent];
  NSAccessibilityPostNotification(self, NSAccessibilityLayoutChangedNotification);
}

- (void)giveUp {
  _pointer->giveUp();
  _highlights->end();
  [_contextMenu cancelTracking];
}

- (void)panelWasHidden {
  [PellowPanelContent lookForPointerSoon];
  pellow::runInPool([&] { _pointer->endPress(); });
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
  _toolTips.show(*_tree, _canvas.stretch, self);
  [PellowPanelContent lookForPointerSoon];
}

- (ViewPoint)toContent:(NSPoint)point {
  return _canvas.stretch.toContent(pellow::toViewPoint(point));
}

- (ViewPoint)pointOf:(NSEvent*)event {
  return [self toContent:[self convertPoint:event.locationInWindow fromView:nil]];
}

// Pointer

- (NSView*)hitTest:(NSPoint)point {
  return [super hitTest:point] ? self : nil;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)__unused event {
  return YES;
}

- (void)mouseDown:(NSEvent*)event {
  if (event.modifierFlags & NSEventModifierFlagControl) {
    pellow::runInPool([&] { _pointer->endPress(); });  // its release was lost
    return [self showContextMenu:event];
  }
  // Not where the pointer is by now: a fast one is already away.
  const NSPoint onScreen = [self.window convertPointToScreen:event.locationInWindow];
  pellow::runInPool(
      [&] { _pointer->pressed([self pointOf:event], pellow::toAppKitPoint(onScreen)); });
}

- (void)mouseDragged:(NSEvent*)event {
  pellow::runInPool(
      [&] { _pointer->moved([self pointOf:event], pellow::toAppKitPoint(NSEvent.mouseLocation)); });
}

- (void)mouseUp:(NSEvent*)event {
  if (_pointer->isDragging()) [PellowPanelContent lookForPointerSoon];
  pellow::runInPool([&] { _pointer->released([self pointOf:event]); });
}

- (void)rightMouseDown:(NSEvent*)event {
  [self showContextMenu:event];
}

- (void)mouseEntered:(NSEvent*)event {
  [self mouseMoved:event];
}

- (void)mouseMoved:(NSEvent*)event {
  pellow::runInPool([&] {
    if (_pointer->call(_onPointerMoved)) _pointer->isAt([self pointOf:event]);
  });
}

- (void)mouseExited:(NSEvent*)__unused event {
  pellow::runInPool([&] { _pointer->isAt(std::nullopt); });
}

- (void)clickNode:(const std::shared_ptr<ViewNode>&)node {
  pellow::runInPool([&] { _pointer->click(*node); });
}

// Context menus

- (void)showContextMenu:(NSEvent*)event {
  std::optional<PanelPointer::ContextMenu> context;
  pellow::runInPool([&] { context = _pointer->contextMenuAt([self pointOf:event]); });
  if (!context) return;
  __weak PellowPanelContent* const weakSelf = self;
  NSMenu* const shown = pellow::makeMenu(
      context->menu, [weakSelf](const auto& chosen) { [weakSelf callBack:chosen]; });
  _contextMenu = shown;
  [NSMenu popUpContextMenu:shown withEvent:event forView:self];
  // The choice may still be to come, and so may an exit of the pointer.
  pellow::whenIdle([hover = std::move(context->hover)]() mutable { hover.cancel(); });
}

- (void)callBack:(const std::function<void()>&)chosen {
  pellow::runInPool([&] { _pointer->call(chosen); });
}

// Hover

+ (void)lookForPointerSoon {
  static bool isWaiting = false;
  if (std::exchange(isWaiting, true)) return;
  pellow::hopToMain([] {
    isWaiting = false;
    [PellowPanelContent lookForPointer];
  });
}

// AppKit tells of what the pointer does, not of what comes under it. It leaves one panel before it
// enters another.
+ (void)lookForPointer {
  const NSInteger number = [NSWindow windowNumberAtPoint:NSEvent.mouseLocation
                             belowWindowWithWindowNumber:0];
  PellowPanelContent* entered = nil;
  for (NSWindow* window in NSApp.windows) {
    if (![window.contentView isKindOfClass:PellowPanelContent.class]) continue;
    PellowPanelContent* const content = (PellowPanelContent*)window.contentView;
    if (window.windowNumber == number && [content isUnderPointer]) {
      entered = content;
    } else {
      content->_pointer->isAt(std::nullopt);
    }
  }
  if (entered) entered->_pointer->isAt([entered toContent:[entered pointerLocation]]);
}

// The window server may not have heard yet that the panel is hidden or ignores the pointer.
- (bool)isUnderPointer {
  return self.window.visible && !self.window.ignoresMouseEvents &&
         NSMouseInRect([self pointerLocation], self.bounds, NO);
}

- (NSPoint)pointerLocation {
  return [self convertPoint:self.window.mouseLocationOutsideOfEventStream fromView:nil];
}

// Tool tips

// One view with a tool tip may stand on another.
- (NSString*)view:(NSView*)__unused view
    stringForToolTip:(NSToolTipTag)__unused tag
               point:(NSPoint)point
            userData:(void*)__unused data {
  const auto node = innermost(_tree->at([self toContent:point]),
                              [](const auto& each) { return !each.look.tooltip.empty(); });
  return node ? pellow::toNSString(node->look.tooltip) : @"";
}

// Accessibility

- (BOOL)isAccessibilityElement {
  return YES;
}

- (NSAccessibilityRole)accessibilityRole {
  return NSAccessibilityToolbarRole;
}

- (NSString*)accessibilityLabel {
  return pellow::toNSString(_tree->accessibleName());
}

- (NSArray*)accessibilityChildren {
  NSMutableArray* const children = [[NSMutableArray alloc] init];
  _tree->visit([&](const auto& node, const ViewTransform&) {
    if (_tree->isAccessible(*node)) [children addObject:[self elementOf:node]];
  });
  return children;
}

- (id)accessibilityHitTest:(NSPoint)onScreen {
  const NSPoint inWindow = [self.window convertPointFromScreen:onScreen];
  const auto node = innermost(_tree->at([self toContent:[self convertPoint:inWindow fromView:nil]]),
                              [&](const auto& each) { return _tree->isAccessible(each); });
  return node ? [self elementOf:node] : self;
}

- (id)elementOf:(const std::shared_ptr<ViewNode>&)node {
  auto& given = node->native<GivenElement>();
  if (!given.element) given.element = [[PellowViewElement alloc] initWithNode:node panel:self];
  return given.element;
}

- (NSRect)frameOnScreen:(const ViewNode&)node {
  const auto area = _tree->areaOf(node);
  if (!area) return NSZeroRect;
  const NSRect inView = pellow::toNSRect(_canvas.stretch.toPanel(*area));
  return [self.window convertRectToScreen:[self convertRect:inView toView:nil]];
}

@end
