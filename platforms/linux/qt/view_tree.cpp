#include "platforms/linux/qt/view_tree.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <unordered_map>
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

// The children that a node had, found by their keys.
class FormerChildren {
 public:
  explicit FormerChildren(std::vector<NodePointer> children) : children_(std::move(children)) {}

  // Removes and returns the one with this key; most often it is the next one.
  NodePointer take(const std::string& key, bool& comesNext) {
    comesNext = next_ < children_.size() && children_[next_] && children_[next_]->key == key;
    if (comesNext) return std::move(children_[next_++]);
    const auto found = places().find(key);
    if (found == places().end() || !children_[found->second]) return nullptr;
    next_ = found->second + 1;
    return std::move(children_[found->second]);
  }

  template <class Visit>
  void forEachLeft(Visit visit) const {
    for (const auto& child : children_)
      if (child) visit(child);
  }

 private:
  using Places = std::unordered_map<std::string, std::size_t>;

  const Places& places() {
    if (places_) return *places_;
    places_.emplace();
    for (std::size_t at = 0; at < children_.size(); ++at)
      if (children_[at]) places_->emplace(children_[at]->key, at);
    return *places_;
  }

  std::vector<NodePointer> children_;
  std::size_t next_ = 0;
  std::optional<Places> places_;  // only where the order changes
};

// Carries a tree over into the nodes of the one before, and notes what looks different.
class Reconciliation {
 public:
  // `isCovered`: all of the view is noted already, as it was and as it will be.
  NodePointer take(NodePointer node, View&& view, const ViewRect& frame, double parentHeight,
                   const QTransform& parentToPanel, bool isCovered) {
    const bool isNew = !node;
    if (isNew) node = std::make_shared<ViewNode>(view.key);
    const bool looksDifferent = node->frame.size != frame.size || node->look != view.look;
    const bool moves = isNew || node->frame != frame || node->look.rotation != view.look.rotation;
    const bool changes = (moves || looksDifferent) && !isCovered;
    if (changes && !isNew) damage(node, parentHeight, parentToPanel, moves);
    if (looksDifferent) {
      node->look = std::move(view.look);
      node->drawing = {};
    }
    node->frame = frame;
    node->actions = std::move(view.actions);
    takeChildren(*node, view.children, placement(*node, parentHeight) * parentToPanel,
                 isCovered || moves);
    if (changes) damage(node, parentHeight, parentToPanel, moves);
    return node;
  }

  std::vector<QRectF> damaged() && { return std::move(damaged_); }

 private:
  void takeChildren(ViewNode& node, std::vector<View>& views, const QTransform& toPanel,
                    bool areCovered) {
    FormerChildren before(std::exchange(node.children, {}));
    node.children.reserve(views.size());
    const auto height = node.frame.height();
    for (auto& view : views) {
      bool comesNext = false;
      auto known = before.take(view.key, comesNext);
      // Otherwise it now stands above other nodes than before.
      if (known && !comesNext && !areCovered) damage(known, height, toPanel, true);
      const auto frame = view.frame;
      node.children.push_back(
          take(std::move(known), std::move(view), frame, height, toPanel, areCovered));
    }
    if (areCovered) return;
    before.forEachLeft([&](const auto& gone) { damage(gone, height, toPanel, true); });
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

std::vector<QRectF> ViewTree::update(View root) {
  if (root_ && root_->key != root.key) root_.reset();
  // The panel is as large as the root, wherever the root says it is.
  const ViewRect frame({}, root.frame.size);
  Reconciliation reconciliation;
  root_ = reconciliation.take(root_, std::move(root), frame, frame.height(), {}, false);
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
