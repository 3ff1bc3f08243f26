#pragma once

#include <QRectF>
#include <QTransform>

#include "views/view_tree.h"

// Inside a panel Qt's y runs down from the top left, and so it does in the coordinates in which a
// view is drawn:
//
//   View space          Qt
//   y ▲  ┌────┐         (0,0)────▶ x
//     │  │view│           │ ┌────┐
//   (0,0)┴────┴─▶ x       ▼ │view│

namespace pellow {

// A rectangle of something with this height.
inline QRectF toQt(const ViewRect& rect, double height) {
  return {rect.minX(), height - rect.maxY(), rect.width(), rect.height()};
}

inline QRectF boundsOf(const ViewNode& node) { return toQt(node.bounds(), node.frame.height()); }
inline QRectF extentOf(const ViewNode& node) { return toQt(node.extent(), node.frame.height()); }

// The way from the coordinates of a node to those of a content with this height.
inline QTransform toQt(const ViewTransform& toContent, const ViewNode& node, double height) {
  const auto& [a, b, c, d, tx, ty] = toContent;
  const double top = node.frame.height();
  return {a, -b, -c, d, c * top + tx, height - d * top - ty};
}

}  // namespace pellow
