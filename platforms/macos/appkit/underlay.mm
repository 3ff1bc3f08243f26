#include "platforms/macos/appkit/underlay.h"

#include <variant>

#include "platforms/macos/foundation/geometry.h"
#include "platforms/macos/foundation/image.h"

namespace pellow {

void Underlay::show(const ViewNode& root, Stretch stretch) {
  NSUInteger count = 0;
  if (std::holds_alternative<Backdrop>(root.look.content))
    showBackdrop(count++, root, toNSRect(stretch.toPanel(root.bounds())));
  for (const auto& child : root.children)
    if (std::holds_alternative<Backdrop>(child->look.content))
      showBackdrop(count++, *child, toNSRect(stretch.toPanel(child->frame)));
  forgetBackdropsFrom(count);
  showPicture(root);
}

void Underlay::showBackdrop(NSUInteger index, const ViewNode& node, NSRect area) {
  if (index == backdrops_.count) {
    PellowBackdrop* const added = [[PellowBackdrop alloc] initWithFrame:NSZeroRect];
    [backdrops_ addObject:added];
    addBelowCanvas(added);
  }
  PellowBackdrop* const backdrop = backdrops_[index];
  backdrop.frame = area;
  backdrop.maskRadius = node.look.cornerRadius;
}

void Underlay::showPicture(const ViewNode& root) {
  const auto* picture = std::get_if<Picture>(&root.look.content);
  const bool isAll = picture && root.children.empty() && !root.look.shadow &&
                     root.look.rotation == 0 && !root.look.highlightsOnHover;
  canvas_.hidden = isAll;
  if (!isAll) {
    [picture_ removeFromSuperview];
    picture_ = nil;
    return;
  }
  if (!picture_) {
    picture_ = [[PellowPictureView alloc] initWithFrame:NSZeroRect];
    addBelowCanvas(picture_);
  }
  NSView* const panel = panel_;
  picture_.frame = panel.bounds;
  picture_.image = toNSImage(picture->image);
  picture_.maskRadius = root.look.cornerRadius;
  picture_.largestSize = toNSSize(root.frame.size);
}

void Underlay::forgetBackdropsFrom(NSUInteger index) {
  while (backdrops_.count > index) {
    [backdrops_.lastObject removeFromSuperview];
    [backdrops_ removeLastObject];
  }
}

void Underlay::addBelowCanvas(NSView* view) {
  NSView* const panel = panel_;
  [panel addSubview:view positioned:NSWindowBelow relativeTo:canvas_];
}

}  // namespace pellow
