#pragma once

#include <QPixmap>
#include <QRectF>
#include <QTransform>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/view.h"
#include "platforms/linux/qt/picture_source.h"

namespace pellow {

// A view as a panel shows it: the data, and what lives on from one tree to the next.
//
//   View space          inside a node and a panel, in points
//   y ▲  ┌────┐         (0,0)────▶ x
//     │  │view│           │ ┌────┐
//   (0,0)┴────┴─▶ x       ▼ │node│
struct ViewNode {
  std::string key;
  ViewRect frame;
  ViewLook look;
  ViewActions actions;
  std::vector<std::shared_ptr<ViewNode>> children;

  bool isHovered = false;
  double highlight = 0;  // 0 to 1, on its way to what `isHovered` says

  // What takes long to draw, as last drawn; empty when it must be drawn anew.
  struct Drawing {
    std::shared_ptr<const PictureSource::Scaled> picture;
    QPixmap pixmap;
  };
  Drawing drawing;

  QRectF bounds() const { return {0, 0, frame.width(), frame.height()}; }
  // The bounds with the shadow around them.
  QRectF extent() const;
};

// The views of a panel. Main thread.
class ViewTree {
 public:
  // The node, and the way from its coordinates to the panel's.
  using Visitor = std::function<void(const std::shared_ptr<ViewNode>&, const QTransform& toPanel)>;

  // Shows `root`. Nodes whose keys remain are kept. Answers what must be drawn again.
  std::vector<QRectF> update(View root);

  // Parents before their children, later siblings after earlier ones.
  void visit(const Visitor& visitor) const;

  // The nodes at a point of the panel, in that order: a child counts only inside its parent.
  std::vector<std::shared_ptr<ViewNode>> at(QPointF point) const;

  const std::shared_ptr<ViewNode>& root() const { return root_; }  // empty at first

 private:
  std::shared_ptr<ViewNode> root_;
};

}  // namespace pellow
