#pragma once

#import <AppKit/AppKit.h>

#include "platforms/macos/appkit/backdrop.h"
#include "platforms/macos/appkit/picture_view.h"
#include "views/view_tree.h"

namespace pellow {

// What a panel shows by views of the system's, below the canvas: backdrops, which are the panel's
// content or directly inside it, and a picture that is all there is; then the canvas is hidden.
// Main thread.
class Underlay {
 public:
  // The panel's root view and the one above the others in it.
  Underlay(NSView* panel, NSView* canvas) : panel_(panel), canvas_(canvas) {}

  // Shows what `root` has of them; call after every change of the content or the size.
  void show(const ViewNode& root, Stretch stretch);

 private:
  void showBackdrop(NSUInteger index, const ViewNode& node, NSRect area);
  void showPicture(const ViewNode& root);
  void forgetBackdropsFrom(NSUInteger index);
  void addBelowCanvas(NSView* view);

  __weak NSView* const panel_;
  NSView* const canvas_;
  NSMutableArray<PellowBackdrop*>* const backdrops_ = [[NSMutableArray alloc] init];
  PellowPictureView* picture_ = nil;
};

}  // namespace pellow
