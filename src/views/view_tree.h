#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/view.h"
#include "views/view_transform.h"

namespace pellow {

// A view as a panel shows it: the data, and what lives on from one tree to the next.
struct ViewNode {
  // What a platform keeps beside a view: its drawing, or what assistive programs were given for it.
  struct NativePart {
    virtual ~NativePart() = default;
    // The view must be drawn anew.
    virtual void lookChanged() {}
  };

  ViewRect frame;
  std::string key;
  ViewLook look;
  ViewActions actions;  // none once it has left the tree
  std::vector<std::shared_ptr<ViewNode>> children;
  std::vector<KeptView> kept;  // what the last of the children show

  bool isHovered = false;
  double highlight = 0;  // 0 to 1, on its way to what `isHovered` says

  ViewRect bounds() const { return {{}, frame.size}; }
  // The bounds with the shadow around them.
  ViewRect extent() const;

  // The platform's own part, made at the first call. A platform has one type of it.
  template <class Part>
  Part& native() {
    if (!native_) native_ = std::make_unique<Part>();
    return static_cast<Part&>(*native_);
  }

  void lookChanged() const {
    if (native_) native_->lookChanged();
  }

 private:
  std::unique_ptr<NativePart> native_;
};

// The views of a panel. Areas and points are the content's, in View space. Main thread.
class ViewTree {
 public:
  using Nodes = std::vector<std::shared_ptr<ViewNode>>;
  // The node, and the way from its coordinates to the content's.
  using Visitor =
      std::function<void(const std::shared_ptr<ViewNode>&, const ViewTransform& toContent)>;

  // Shows `root`. Nodes whose keys remain are kept. Answers what must be drawn again: all of it as
  // one area where there would be too many.
  std::vector<ViewRect> update(const View& root);

  // Parents before their children, later siblings after earlier ones.
  void visit(const Visitor& visitor) const;

  // The nodes at a point, in that order: a child counts only inside its parent.
  Nodes at(ViewPoint point) const;

  // Where the node is; nothing when it is not in the tree.
  std::optional<ViewRect> areaOf(const ViewNode& node) const;

  // Of the content, to a panel of this size.
  Stretch stretchTo(Size panel) const;

  const std::shared_ptr<ViewNode>& root() const { return root_; }  // empty at first

  // Whether assistive programs see the view by itself: it has a name, which is not only the
  // panel's.
  bool isAccessible(const ViewNode& node) const {
    return !node.look.accessibleName.empty() && (&node != root_.get() || node.actions.onClick);
  }
  // Of the panel; may be empty.
  std::string accessibleName() const { return root_ ? root_->look.accessibleName : ""; }

 private:
  std::shared_ptr<ViewNode> root_;
};

// The innermost of the nodes at a point for which `has` holds; empty when there is none.
template <class Has>
std::shared_ptr<ViewNode> innermost(const ViewTree::Nodes& nodes, Has has) {
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node)
    if (has(**node)) return *node;
  return nullptr;
}

}  // namespace pellow
