#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "base/geometry.h"
#include "base/subscription.h"
#include "model/strip_edge.h"
#include "platform/event_monitors.h"
#include "platform/panels.h"
#include "platform/queues.h"
#include "strips/strip_entry.h"

namespace pellow {

// What the preview of a tab shows, and beside what.
struct TabPreview {
  StripEntry entry;
  AppKitRect tabFrame;            // on the screen
  std::optional<StripEdge> snap;  // of the tab's zone
  AppKitRect visibleFrame;        // of the display
  double width = 0;               // points, as preferred
  ViewActions actions;            // of the preview: its click and its context menu

  // Content as tall as its picture asks for, within the display.
  Size contentSize() const;

  // On the side of the tab away from its edge, 4 points inside the visible frame. Beside a floating
  // zone, where there is room: on the right, if it is on both sides.
  AppKitRect frame() const;

  View content() const;
};

// The larger picture of a window beside its tab, while the pointer rests on either. Main thread.
class TabPreviewPanel {
 public:
  // All of it outlives the panel.
  struct Surroundings {
    Panels& panels;
    MainQueue& mainQueue;
    const EventMonitors& pointer;
  };

  explicit TabPreviewPanel(const Surroundings& surroundings) : around_(surroundings) {}

  // It was to be seen and is not any more.
  std::function<void()> onHidden;

  // The pointer came onto a tab: what `preview` answers by then shows after 0.35 s. What shows now
  // stays so long.
  void scheduleShow(std::function<std::optional<TabPreview>()> preview);

  // The pointer left the tab or the preview: it goes after 0.25 s, unless the pointer is inside.
  void scheduleHide();

  // What shows has changed, and perhaps moved away beneath the pointer.
  void update(const TabPreview& preview);

  // What is scheduled to show still will.
  void hide();

  // Nothing shows before the pointer comes onto a tab again.
  void dismiss();

  bool isVisible() const { return panel_ && panel_->isVisible(); }

  // Whether it is to be seen, and the pointer is inside or in its menu.
  bool isUnderPointer() const;

 private:
  void render(const TabPreview& preview);
  void hoverChanged(bool inside);
  // The pointer came back before it went.
  void keep() { hideWork_.cancel(); }

  Surroundings around_;
  std::unique_ptr<Panel> panel_;  // made when it is first to be seen
  bool isHovered_ = false;
  Subscription showWork_;
  Subscription hideWork_;
};

}  // namespace pellow
