#pragma once

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/view.h"

namespace pellow {

// A view as a panel shows it: the data, and what lives on from one tree to the next.
struct ViewNode {
  std::string key;
  ViewRect frame;
  ViewLook look;
  ViewActions actions;
  std::vector<std::shared_ptr<ViewNode>> children;

  bool isHovered = false;
  double highlight = 0;  // 0 to 1, on its way to what `isHovered` says
  id accessible = nil;   // what assistive programs have been given for it

  CGRect bounds() const { return CGRectMake(0, 0, frame.width(), frame.height()); }
  // The bounds with the shadow around them.
  CGRect extent() const;
};

// The views of a panel, in View space all the way to the panel. Main thread.
class ViewTree {
 public:
  // The node, and the way from its coordinates to the panel's.
  using Visitor =
      std::function<void(const std::shared_ptr<ViewNode>&, const CGAffineTransform& toPanel)>;

  // Shows `root`. Nodes whose keys remain are kept. Answers what must be drawn again.
  std::vector<CGRect> update(View root);

  // Parents before their children, later siblings after earlier ones.
  void visit(const Visitor& visitor) const;

  // The nodes at a point of the panel, in that order: a child counts only inside its parent.
  std::vector<std::shared_ptr<ViewNode>> at(CGPoint point) const;

  // Where the node is in the panel; CGRectNull when it is not in the tree.
  CGRect areaOf(const ViewNode& node) const;

  const std::shared_ptr<ViewNode>& root() const { return root_; }  // empty at first

 private:
  std::shared_ptr<ViewNode> root_;
};

}  // namespace pellow
