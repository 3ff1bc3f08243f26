#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/subscription.h"
#include "platform/clock.h"
#include "views/view_tree.h"

namespace pellow {

// What the pointer does to the views of one panel, by the rules of `ViewActions`. The platform
// tells where it is in the content, and where on the screen, in points from any fixed origin with y
// up. Every member may end the panel, and with it this object, by a callback of a view. Main
// thread.
class PanelPointer {
 public:
  struct ContextMenu {
    Menu menu;
    // Views stay hovered or not as they are until this is dropped: once the menu has closed and
    // what was chosen from it is done, or if it is not shown. Dropping it calls `onNeedsPointer`.
    Subscription hover;
  };

  // The tree outlives it.
  explicit PanelPointer(const ViewTree& tree) : tree_(tree) {}
  PanelPointer(const PanelPointer&) = delete;
  PanelPointer& operator=(const PanelPointer&) = delete;
  ~PanelPointer() { giveUp(); }

  // An area of the content looks different.
  std::function<void(const ViewRect& area)> onNeedsDisplay;
  // Highlights change from now on: call `advanceHighlights` until they are through.
  std::function<void()> onHighlightsBegin;
  // Look for the pointer and call `isAt`, once the current work is done.
  std::function<void()> onNeedsPointer;

  // The primary button goes down, the pointer moves, with the button or without, and it goes up.
  void pressed(ViewPoint at, AppKitPoint onScreen);
  void moved(ViewPoint at, AppKitPoint onScreen);
  void released(ViewPoint at);

  // No release will come of a press: the panel was hidden, say. Ends a drag.
  void endPress();

  // The pointer is found there, or nowhere in the panel: it has left, or views have moved. Changes
  // nothing while a drag runs or a context menu holds the hover.
  void isAt(std::optional<ViewPoint> point);

  // What a secondary click there opens, if anything; nothing while the primary button is down. Of a
  // menu opened before, the hover is held no longer.
  std::optional<ContextMenu> contextMenuAt(ViewPoint point);

  // A click by other means than the pointer.
  void click(const ViewNode& node) { call(node.actions.onClick); }

  // Runs a callback, say of a menu item, which may replace itself. False once it is over with this
  // object: it was told to give up, or has gone.
  bool call(const std::function<void()>& callback);

  // No callback is called again.
  void giveUp();

  bool isCallingBack() const { return calls_->running > 0; }
  bool isDragging() const { return press_ && press_->isDragging; }
  // Whether a release would click the node.
  bool isPressing(const ViewNode& node) const;

  // Leads the highlights to where the pointer wants them. True while there is more to do.
  bool advanceHighlights(Seconds elapsed);

 private:
  struct Press {
    std::shared_ptr<ViewNode> clicks;  // empty when there is nothing to click
    DragActions drag;                  // of the view that was pressed, whatever becomes of it
    AppKitPoint from;
    bool isDragging = false;
  };
  struct Calls {
    int running = 0;
    bool haveEnded = false;
  };

  struct HoverHold {};

  bool dragTo(AppKitPoint onScreen);
  bool finishPress();
  bool tellHover(const ViewTree::Nodes& nodes, bool inside);
  Subscription holdHover();
  void needsDisplay(const std::shared_ptr<ViewNode>& node) const;

  const ViewTree& tree_;
  std::optional<Press> press_;
  std::vector<std::weak_ptr<ViewNode>> hovered_;  // from the outside in
  std::weak_ptr<HoverHold> hoverHold_;            // of the latest context menu, while it is open
  std::shared_ptr<Calls> calls_ = std::make_shared<Calls>();
};

}  // namespace pellow
