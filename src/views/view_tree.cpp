#include "views/view_tree.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>
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
  node.kept.clear();
  for (const auto& child : node.children) leaveTree(*child);
}

// The children that a node had, found by their keys.
class FormerChildren {
 public:
  struct Child {
    NodePointer node;
    bool comesNext = false;  // after the one taken before
    bool isKept = false;     // shows the very view already
  };

  explicit FormerChildren(ViewNode& parent)
      : children_(std::exchange(parent.children, {})), kept_(std::exchange(parent.kept, {})) {}

  // Removes and returns the one for the view, if any; most often it is the next one.
  Child take(const View& view) {
    auto place = next_;
    const bool comesNext = place < children_.size() && children_[place] &&
                           (shows(place, view) || children_[place]->key == view.key);
    if (!comesNext) {
      const auto found = places().find(view.key);
      if (found == places().end() || !children_[found->second]) return {};
      place = found->second;
    }
    next_ = place + 1;
    return {std::move(children_[place]), comesNext, shows(place, view)};
  }

  template <class Visit>
  void forEachLeft(Visit visit) const {
    for (const auto& child : children_)
      if (child) visit(child);
  }

 private:
  using Places = std::unordered_map<std::string_view, std::size_t>;

  bool shows(std::size_t place, const View& view) const {
    const auto others = children_.size() - kept_.size();
    return place >= others && kept_[place - others].view.get() == &view;
  }

  const Places& places() {
    if (places_) return *places_;
    places_.emplace();
    for (std::size_t at = 0; at < children_.size(); ++at)
      if (children_[at]) places_->emplace(children_[at]->key, at);
    return *places_;
  }

  std::vector<NodePointer> children_;
  std::vector<KeptView> kept_;
  std::size_t next_ = 0;
  std::optional<Places> places_;  // only where the order changes
};

// Carries a tree over into the nodes of the one before, and notes what looks different.
class Reconciliation {
 public:
  // `isCovered`: all of the view is noted already, as it was and as it will be.
  NodePointer take(NodePointer node, const View& view, ViewPoint origin,
                   const ViewTransform& parentToContent, bool isCovered) {
    const bool isNew = !node;
    if (isNew) {
      node = std::make_shared<ViewNode>();
      node->key = view.key;
    }
    const ViewRect frame(origin, view.frame.size);
    const bool looksDifferent = node->frame.size != frame.size || node->look != view.look;
    const bool moves = isNew || node->frame != frame || node->look.rotation != view.look.rotation;
    isCovered = isCovered || notesAll();
    const bool changes = (moves || looksDifferent) && !isCovered;
    if (changes && !isNew) damage(node, parentToContent, moves);
    node->frame = frame;
    if (looksDifferent) {
      node->look = view.look;
      node->lookChanged();
    }
    node->actions = view.actions;
    takeChildren(*node, view, placement(*node).then(parentToContent), isCovered || moves);
    if (changes) damage(node, parentToContent, moves);
    return node;
  }

  // So many areas that all of the content may as well be drawn.
  bool notesAll() const { return damaged_.size() > manyAreas; }

  std::vector<ViewRect> damaged() && { return std::move(damaged_); }

 private:
  void takeChildren(ViewNode& node, const View& view, const ViewTransform& toContent,
                    bool areCovered) {
    if (hasSameKeys(node, view)) return updateKept(node, view.kept, toContent, areCovered);
    FormerChildren before(node);
    node.children.reserve(view.children.size() + view.kept.size());
    for (const auto& child : view.children)
      takeChild(node, before, child, child.frame.origin, toContent, areCovered);
    for (const auto& child : view.kept)
      takeChild(node, before, *child.view, child.origin, toContent, areCovered);
    node.kept = view.kept;
    before.forEachLeft([&](const auto& gone) {
      if (!areCovered) damage(gone, toContent, true);
      leaveTree(*gone);
    });
  }

  void takeChild(ViewNode& parent, FormerChildren& before, const View& view, ViewPoint origin,
                 const ViewTransform& toContent, bool isCovered) {
    auto [node, comesNext, isKept] = before.take(view);
    // Otherwise it now stands above other nodes than before.
    if (node && !comesNext && !isCovered) damage(node, toContent, true);
    if (isKept) {
      move(node, origin, toContent, isCovered);
    } else {
      node = take(std::move(node), view, origin, toContent, isCovered);
    }
    parent.children.push_back(std::move(node));
  }

  // Whether there are only kept views, each in the place it had.
  static bool hasSameKeys(const ViewNode& node, const View& view) {
    const auto& shown = node.kept;
    return view.children.empty() && node.children.size() == shown.size() &&
           std::ranges::equal(shown, view.kept, [](const auto& before, const auto& now) {
             return before.view == now.view || before.view->key == now.view->key;
           });
  }

  // There may be thousands: nodes to which nothing happens are not looked at.
  void updateKept(ViewNode& parent, const std::vector<KeptView>& views,
                  const ViewTransform& toContent, bool areCovered) {
    for (std::size_t at = 0; at < views.size(); ++at) {
      auto& node = parent.children[at];
      auto& shown = parent.kept[at];
      const auto& [origin, view] = views[at];
      if (shown.view != view) {
        node = take(std::move(node), *view, origin, toContent, areCovered);
        shown.view = view;
      } else if (shown.origin != origin) {
        move(node, origin, toContent, areCovered);
      }
      shown.origin = origin;
    }
  }

  void move(const NodePointer& node, ViewPoint origin, const ViewTransform& toContent,
            bool isCovered) {
    const bool changes = !isCovered && !notesAll();
    if (changes) damage(node, toContent, true);
    node->frame.origin = origin;
    if (changes) damage(node, toContent, true);
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

std::vector<ViewRect> ViewTree::update(const View& root) {
  if (root_ && root_->key != root.key) leaveTree(*std::exchange(root_, nullptr));
  Reconciliation reconciliation;
  const bool isResized = !root_ || root_->frame.size != root.frame.size;
  // The panel is as large as the root, wherever the root says it is.
  root_ = reconciliation.take(root_, root, {}, {}, isResized);
  if (isResized || reconciliation.notesAll()) return {root_->extent()};
  return std::move(reconciliation).damaged();
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
