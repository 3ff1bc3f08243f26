#include "views/view_tree.h"

#include <cmath>
#include <cstddef>
#include <unordered_map>
#include <utility>

namespace pellow {
namespace {

constexpr std::size_t manyAreas = 64;

using NodePointer = std::shared_ptr<ViewNode>;

ViewTransform placement(const ViewNode& node) {
  return ViewTransform::placement(node.frame, node.look.rotation);
}

void visitBelow(const NodePointer& node, const ViewTransform& toContent,
                const ViewTree::Visitor& visitor) {
  visitor(node, toContent);
  for (const auto& child : node->children)
    visitBelow(child, placement(*child).then(toContent), visitor);
}

// Whoever still holds one of the nodes calls nothing through it.
void leaveTree(ViewNode& node) {
  node.actions = {};
  for (const auto& child : node.children) leaveTree(*child);
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
  NodePointer take(NodePointer node, View&& view, const ViewTransform& parentToContent,
                   bool isCovered) {
    const bool isNew = !node;
    if (isNew) {
      node = std::make_shared<ViewNode>();
      node->key = std::move(view.key);
    }
    const bool looksDifferent = node->frame.size != view.frame.size || node->look != view.look;
    const bool moves =
        isNew || node->frame != view.frame || node->look.rotation != view.look.rotation;
    const bool changes = (moves || looksDifferent) && !isCovered;
    if (changes && !isNew) damage(node, parentToContent, moves);
    node->frame = view.frame;
    if (looksDifferent) {
      node->look = std::move(view.look);
      node->lookChanged();
    }
    node->actions = std::move(view.actions);
    takeChildren(*node, view.children, placement(*node).then(parentToContent), isCovered || moves);
    if (changes) damage(node, parentToContent, moves);
    return node;
  }

  std::vector<ViewRect> damaged() && { return std::move(damaged_); }

 private:
  void takeChildren(ViewNode& node, std::vector<View>& views, const ViewTransform& toContent,
                    bool areCovered) {
    FormerChildren before(std::exchange(node.children, {}));
    node.children.reserve(views.size());
    for (auto& view : views) {
      bool comesNext = false;
      auto known = before.take(view.key, comesNext);
      // Otherwise it now stands above other nodes than before.
      if (known && !comesNext && !areCovered) damage(known, toContent, true);
      node.children.push_back(take(std::move(known), std::move(view), toContent, areCovered));
    }
    before.forEachLeft([&](const auto& gone) {
      if (!areCovered) damage(gone, toContent, true);
      leaveTree(*gone);
    });
  }

  void damage(const NodePointer& node, const ViewTransform& parentToContent, bool withChildren) {
    const auto toContent = placement(*node).then(parentToContent);
    auto all = toContent.map(node->extent());
    const auto add = [&](const NodePointer& below, const ViewTransform& belowToContent) {
      all = all.united(belowToContent.map(below->extent()));
    };
    if (withChildren) visitBelow(node, toContent, add);
    damaged_.push_back(all);
  }

  std::vector<ViewRect> damaged_;
};

// The hot spot of a pointer is the upper left corner of its pixel, so a view ends just before its
// right and its lower side.
bool isOn(const ViewRect& bounds, ViewPoint hotSpot) {
  return hotSpot.x >= bounds.minX() && hotSpot.x < bounds.maxX() && hotSpot.y > bounds.minY() &&
         hotSpot.y <= bounds.maxY();
}

void collectAt(const NodePointer& node, ViewPoint point, ViewTree::Nodes& found) {
  const auto inside = placement(*node).mapBack(point);
  if (!isOn(node->bounds(), inside)) return;
  found.push_back(node);
  for (const auto& child : node->children) collectAt(child, inside, found);
}

}  // namespace

ViewRect ViewNode::extent() const {
  if (!look.shadow) return bounds();
  const auto& shadow = *look.shadow;
  const auto blur = std::ceil(shadow.blurRadius) + 1;
  return bounds().united(
      {shadow.dx - blur, shadow.dy - blur, frame.width() + 2 * blur, frame.height() + 2 * blur});
}

std::vector<ViewRect> ViewTree::update(View root) {
  if (root_ && root_->key != root.key) leaveTree(*std::exchange(root_, nullptr));
  root.frame.origin = {};  // the panel is as large as the root, wherever the root says it is
  Reconciliation reconciliation;
  root_ = reconciliation.take(root_, std::move(root), {}, false);
  auto damaged = std::move(reconciliation).damaged();
  if (damaged.size() > manyAreas) return {root_->extent()};
  return damaged;
}

void ViewTree::visit(const Visitor& visitor) const {
  if (root_) visitBelow(root_, placement(*root_), visitor);
}

ViewTree::Nodes ViewTree::at(ViewPoint point) const {
  Nodes found;
  if (root_) collectAt(root_, point, found);
  return found;
}

std::optional<ViewRect> ViewTree::areaOf(const ViewNode& node) const {
  std::optional<ViewRect> area;
  visit([&](const auto& other, const ViewTransform& toContent) {
    if (other.get() == &node) area = toContent.map(node.bounds());
  });
  return area;
}

Stretch ViewTree::stretchTo(Size panel) const {
  return root_ ? Stretch::between(root_->frame.size, panel) : Stretch{};
}

}  // namespace pellow
