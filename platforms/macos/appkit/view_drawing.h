#pragma once

#import <AppKit/AppKit.h>

#include "views/view_tree.h"

namespace pellow {

// A picture of this size in the middle of `area`, as large as fits; empty for one without a size.
NSRect fitted(NSSize size, NSRect area);

// Draws a view without its children and backdrop into the current context, whose coordinates are
// the view's: call while a view is drawn, where dynamic colours have their shade. Main thread.
void drawView(const ViewNode& node, Stretch stretch, bool isPressed);

}  // namespace pellow
