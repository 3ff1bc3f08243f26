#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "platforms/macos/appkit/panel_content.h"

// A view with an accessible name as assistive programs see it: a button if it can be clicked, else
// a picture. Belongs to its node and outlives it without harm.
@interface PellowViewElement : NSAccessibilityElement

- (instancetype)initWithNode:(const std::shared_ptr<pellow::ViewNode>&)node
                       panel:(PellowPanelContent*)panel;

@end
