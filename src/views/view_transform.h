#pragma once

#include "base/geometry.h"

namespace pellow {

// The way from one view's coordinates to another's:
//
//   x' = a·x + c·y + tx        y' = b·x + d·y + ty
struct ViewTransform {
  double a = 1;
  double b = 0;
  double c = 0;
  double d = 1;
  double tx = 0;
  double ty = 0;

  bool operator==(const ViewTransform&) const = default;

  // From a view to its parent, where it has this frame and is turned about its centre, by degrees
  // counter-clockwise.
  static ViewTransform placement(const ViewRect& frame, double rotation);

  // This way, then `next`.
  ViewTransform then(const ViewTransform& next) const;

  ViewPoint map(ViewPoint point) const;
  ViewRect map(const ViewRect& rect) const;  // the smallest upright one around it
  ViewPoint mapBack(ViewPoint point) const;
};

// How far a panel's content is stretched to the panel's size, from its bottom left corner.
struct Stretch {
  double x = 1;
  double y = 1;

  bool operator==(const Stretch&) const = default;

  // A panel's sides are whole pixels; what is lost by that is no reason to blur texts.
  static Stretch between(Size content, Size panel);

  ViewPoint toContent(ViewPoint inPanel) const { return {inPanel.x / x, inPanel.y / y}; }
  ViewPoint toPanel(ViewPoint inContent) const { return {inContent.x * x, inContent.y * y}; }
  ViewRect toPanel(const ViewRect& inContent) const;
};

}  // namespace pellow
