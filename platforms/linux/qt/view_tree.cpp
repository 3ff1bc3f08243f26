#include "platforms/linux/qt/view_tree.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace pellow {
namespace {

using NodePointer = std::shared_ptr<ViewNode>;

QTransform placement(const ViewNode& node, double parentHeight) {
  const auto centre = node.bounds().center();
  QTransform transform;
  transform.translate(node.frame.minX() + centre.x(), parentHeight - node.frame.midY());
  transform.rotate(-node.look.rotation);  // counter-clockwise, where y runs down
  transform.translate(-centre.x(), -centre.y());
  return transform;
}

void visitBelow(const NodePointer& node, const QTransform& toPanel,
                const ViewTree::Visitor& visitor) {
  visitor(node, toPanel);
  for (const auto& child : node->children)
    visitBelow(child, placement(*child, node->frame.height()) * toPanel, visitor);
}

// Takes over one tree into the nodes of the one before, and notes what looks different.
class Reconciliation {
 public:
  NodePointer take(NodePointer node, const View& view, const ViewRect& frame, double parentHeight,
                   const QTransform& parentToPanel) {
    const bool isNew = !node;
    if (isNew) node = std::make_shared<ViewNode>(view.key);
    const bool looksDifferent = node->frame.size != frame.size || node->look != view.look;
    const bool moves = isNew || node->frame != frame || node->look.rotation != view.look.rotation;
    const bool changes = moves || looksDifferent;
    if (changes && !isNew) damage(node, parentHeight, parentToPanel, moves);
    if (looksDifferent) {
      node->look = view.look;
      node->drawing = {};
    }
    node->frame = frame;
    node->actions = view.actions;
    takeChildren(*node, view, placement(*node, parentHeight) * parentToPanel);
    if (changes) damage(node, parentHeight, parentToPanel, moves);
    return node;
  }

  std::vector<QRectF> damaged() && { return std::move(damaged_); }

 private:
  void takeChildren(ViewNode& node, const View& view, const QTransform& toPanel) {
    auto before = std::exchange(node.children, {});
    node.children.reserve(view.children.size());
    std::size_t next = 0;  // most often nothing has changed its place
    for (const auto& child : view.children) {
      NodePointer known;
      if (next < before.size() && before[next] && before[next]->key == child.key) {
        known = std::move(before[next++]);
      } else if (const auto found = std::ranges::find_if(
                     before, [&](const auto& old) { return old && old->key == child.key; });
                 found != before.end()) {
        known = std::move(*found);
        next = static_cast<std::size_t>(found - before.begin()) + 1;
        // It now stands above others than before.
        damage(known, node.frame.height(), toPanel, true);
      }
      node.children.push_back(
          take(std::move(known), child, child.frame, node.frame.height(), toPanel));
    }
    for (const auto& gone : before)
      if (gone) damage(gone, node.frame.height(), toPanel, true);
  }

  void damage(const NodePointer& node, double parentHeight, const QTransform& parentToPanel,
              bool withChildren) {
    const auto toPanel = placement(*node, parentHeight) * parentToPanel;
    if (!withChildren) return damaged_.push_back(toPanel.mapRect(node->extent()));
    QRectF all;
    visitBelow(node, toPanel, [&](const NodePointer& below, const QTransform& belowToPanel) {
      all |= belowToPanel.mapRect(below->extent());
    });
    damaged_.push_back(all);
  }

  std::vector<QRectF> damaged_;
};

void collectAt(const NodePointer& node, double parentHeight, QPointF point,
               std::vector<NodePointer>& found) {
  const auto inside = placement(*node, parentHeight).inverted().map(point);
  if (!node->bounds().contains(inside)) return;
  found.push_back(node);
  for (const auto& child : node->children) collectAt(child, node->frame.height(), inside, found);
}

}  // namespace

QRectF ViewNode::extent() const {
  if (!look.shadow) return bounds();
  const auto& shadow = *look.shadow;
  const auto blur = std::ceil(shadow.blurRadius) + 1;
  return bounds().united(
      bounds().translated(shadow.dx, -shadow.dy).adjusted(-blur, -blur, blur, blur));
}

std::vector<QRectF> ViewTree::update(const View& root) {
  if (root_ && root_->key != root.key) root_.reset();
  // The panel is as large as the root, wherever the root says that it stands.
  const ViewRect frame({}, root.frame.size);
  Reconciliation reconciliation;
  root_ = reconciliation.take(root_, root, frame, frame.height(), {});
  return std::move(reconciliation).damaged();
}

void ViewTree::visit(const Visitor& visitor) const {
  if (root_) visitBelow(root_, placement(*root_, root_->frame.height()), visitor);
}

std::vector<std::shared_ptr<ViewNode>> ViewTree::at(QPointF point) const {
  std::vector<NodePointer> found;
  if (root_) collectAt(root_, root_->frame.height(), point, found);
  return found;
}

}  // namespace pellow
