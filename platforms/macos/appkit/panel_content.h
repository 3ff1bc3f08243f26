#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <memory>

#include "platform/view.h"
#include "views/view_tree.h"

// The root view of a panel: keeps its views and tells them of the pointer. It finds out itself
// which one the pointer meets, so that a drag goes on whatever becomes of the content. Main thread.
@interface PellowPanelContent : NSView <NSViewToolTipOwner>

// `onPointerMoved` hears of every movement over the panel.
- (instancetype)initWithPointerMoved:(std::function<void()>)onPointerMoved;

- (void)showViews:(const pellow::View&)root;

// Finds the view under the pointer once the current work is done, in all panels: either may have
// moved, and one panel may have come above another.
+ (void)lookForPointerSoon;

// Ends a drag; its `onEnded` may end the panel.
- (void)panelWasHidden;

// No callback is called again.
- (void)giveUp;

// For assistive programs.

- (NSRect)frameOnScreen:(const pellow::ViewNode&)node;
// What a press and release of the pointer inside the node does.
- (void)clickNode:(const std::shared_ptr<pellow::ViewNode>&)node;

@end
