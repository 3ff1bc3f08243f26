#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "views/panel_pointer.h"
#include "views/view_tree.h"

// Draws the views of a panel, stretched from the content's size to its own.
@interface PellowViewCanvas : NSView

// Draws anew only what it is told of.
- (instancetype)initWithTree:(std::shared_ptr<const pellow::ViewTree>)tree
                     pointer:(std::shared_ptr<const pellow::PanelPointer>)pointer;

@property(nonatomic, readonly) pellow::Stretch stretch;

- (void)contentNeedsDisplayIn:(const pellow::ViewRect&)area;

@end
