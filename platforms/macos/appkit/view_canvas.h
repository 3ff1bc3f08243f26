#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "platforms/macos/appkit/view_drawing.h"
#include "platforms/macos/appkit/view_tree.h"

// Draws the views of a panel, stretched from the content's size to its own.
@interface PellowViewCanvas : NSView

// Draws anew only what it is told of.
- (instancetype)initWithTree:(std::shared_ptr<const pellow::ViewTree>)tree;

@property(nonatomic, readonly) pellow::Stretch stretch;

// The view that is being clicked, if any.
@property(nonatomic) std::shared_ptr<const pellow::ViewNode> pressed;

// `area` in the content.
- (void)contentNeedsDisplayIn:(CGRect)area;

@end
