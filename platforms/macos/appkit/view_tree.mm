#include "platforms/macos/appkit/view_tree.h"

#include <cstddef>
#include <numbers>
#include <unordered_map>
#include <utility>

#include "platforms/macos/foundation/geometry.h"

namespace pellow {
namespace {

using NodePointer = std::shared_ptr<ViewNode>;

// From the node's coordinates to its parent's.
CGAffineTransform placement(const ViewNode& node) {
  const auto& frame = node.frame;
  const auto turned =
      CGAffineTransformRotate(CGAffineTransformMakeTranslation(frame.midX(), frame.midY()),
                              node.look.rotation * std::numbers::pi / 180);
  return CGAffineTransformTranslate(turned, -frame.width() / 2, -frame.height() / 2);
}

void visitBelow(const NodePointer& node, const CGAffineTransform& toPanel,
                const ViewTree::Visitor& visitor) {
  visitor(node, toPanel);
  for (const auto& child : node->children)
    visitBelow(child, CGAffineTransformConcat(placement(*child), toPanel), visitor);
}

// The children that a node had, found by their keys.
class FormerChildren {
 public:
  explicit FormerChildren(std::vector<NodePointer> children) : children_(std::move(children)) {
    for (std::size_t at = 0; at < children_.size(); ++at)
      places_.try_emplace(children_[at]->key, at);
  }

  // Removes and returns the one with this key. Unless it `comesNext`, it may stand above others
  // than before.
  NodePointer take(const std::string& key, bool& comesNext) {
    const auto found = places_.find(key);
    if (found == places_.end() || !children_[found->second]) return nullptr;
    comesNext = found->second == next_;
    next_ = found->second + 1;
    return std::exchange(children_[found->second], nullptr);
  }

  template <class Visit>
  void forEachLeft(Visit visit) const {
    for (const auto& child : children_)
      if (child) visit(child);
  }

 private:
  std::vector<NodePointer> children_;
  std::unordered_map<std::string, std::size_t> places_;
  std::size_t next_ = 0;
};

// Carries a tree over into the nodes of the one before, and notes what looks different.
class Reconciliation {
 public:
  NodePointer take(NodePointer node, View&& view, const CGAffineTransform& parentToPanel) {
    const bool isNew = !node;
    if (isNew) node = std::make_shared<ViewNode>();
    const bool differs = isNew || node->frame != view.frame || node->look != view.look;
    if (differs && !isNew) damage(node, parentToPanel);
    node->key = std::move(view.key);
    node->frame = view.frame;
    node->look = std::move(view.look);
    node->actions = std::move(view.actions);
    takeChildren(*node, view.children, CGAffineTransformConcat(placement(*node), parentToPanel));
    if (differs) damage(node, parentToPanel);
    return node;
  }

  std::vector<CGRect> damaged() && { return std::move(damaged_); }

 private:
  void takeChildren(ViewNode& node, std::vector<View>& views, const CGAffineTransform& toPanel) {
    FormerChildren before(std::exchange(node.children, {}));
    node.children.reserve(views.size());
    for (auto& view : views) {
      bool comesNext = false;
      auto known = before.take(view.key, comesNext);
      if (known && !comesNext) damage(known, toPanel);
      node.children.push_back(take(std::move(known), std::move(view), toPanel));
    }
    before.forEachLeft([&](const auto& gone) { damage(gone, toPanel); });
  }

  // The node with all its children.
  void damage(const NodePointer& node, const CGAffineTransform& parentToPanel) {
    CGRect all = CGRectNull;
    visitBelow(node, CGAffineTransformConcat(placement(*node), parentToPanel),
               [&](const NodePointer& below, const CGAffineTransform& toPanel) {
                 all = CGRectUnion(all, CGRectApplyAffineTransform(below->extent(), toPanel));
               });
    damaged_.push_back(all);
  }

  std::vector<CGRect> damaged_;
};

void collectAt(const NodePointer& node, CGPoint point, std::vector<NodePointer>& found) {
  const auto inside = CGPointApplyAffineTransform(point, CGAffineTransformInvert(placement(*node)));
  if (!CGRectContainsPoint(node->bounds(), inside)) return;
  found.push_back(node);
  for (const auto& child : node->children) collectAt(child, inside, found);
}

}  // namespace

CGRect ViewNode::extent() const {
  if (!look.shadow) return bounds();
  const auto& shadow = *look.shadow;
  const auto cast = CGRectInset(CGRectOffset(bounds(), shadow.dx, shadow.dy),
                                -shadow.blurRadius - 1, -shadow.blurRadius - 1);
  return CGRectUnion(bounds(), cast);
}

std::vector<CGRect> ViewTree::update(View root) {
  if (root_ && root_->key != root.key) root_.reset();
  root.frame.origin = {};  // the panel is as large as the root, wherever the root says it is
  Reconciliation reconciliation;
  root_ = reconciliation.take(root_, std::move(root), CGAffineTransformIdentity);
  return std::move(reconciliation).damaged();
}

void ViewTree::visit(const Visitor& visitor) const {
  if (root_) visitBelow(root_, placement(*root_), visitor);
}

std::vector<std::shared_ptr<ViewNode>> ViewTree::at(CGPoint point) const {
  std::vector<NodePointer> found;
  if (root_) collectAt(root_, point, found);
  return found;
}

CGRect ViewTree::areaOf(const ViewNode& node) const {
  CGRect area = CGRectNull;
  visit([&](const auto& other, const CGAffineTransform& toPanel) {
    if (other.get() == &node) area = CGRectApplyAffineTransform(node.bounds(), toPanel);
  });
  return area;
}

}  // namespace pellow
