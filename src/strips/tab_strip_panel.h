#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "base/subscription.h"
#include "base/uuid.h"
#include "model/preferences.h"
#include "model/tab_zone.h"
#include "platform/clock.h"
#include "platform/event_monitors.h"
#include "platform/panels.h"
#include "platform/queues.h"
#include "platform/screens.h"
#include "strips/strip_callbacks.h"
#include "strips/strip_entries.h"
#include "strips/strip_entry.h"
#include "strips/strip_geometry.h"
#include "strips/strip_menus.h"
#include "strips/tab_preview_panel.h"

namespace pellow {

// The panel that shows one zone's tabs on one display: slides out of sight where the user wants
// that, can be dragged to another place, and has menus. Main thread.
class TabStripPanel {
 public:
  // All of it outlives the panel.
  struct Surroundings {
    Panels& panels;
    const Preferences& preferences;
    Screens& screens;
    Clock& clock;
    MainQueue& mainQueue;
    EventMonitors& pointer;
    const StripCallbacks& callbacks;
    const StripMenus& menus;
  };

  explicit TabStripPanel(const Surroundings& surroundings);

  // Shows these entries of the zone at the zone's place on the display, in front.
  void render(const std::vector<ListedEntry>& entries, const Screen& screen, const TabZone& zone);

 private:
  // All that the content of the panel depends on, besides the entries.
  struct Shown {
    Screen screen;
    TabZone zone;
    bool pictureTabs = false;

    bool operator==(const Shown&) const = default;
  };
  // What the view of a tab was made of.
  struct Tab {
    UUID id;
    SharedEntry entry;
    StripLayout layout;
    bool isGroup = false;
  };
  struct Drag {
    AppKitRect start;  // of the panel
    AppKitVector movedBy;
  };

  bool showsTabsOf(const std::vector<ListedEntry>& entries) const;
  bool showsSameTabs(const std::vector<ListedEntry>& entries) const;
  void layOut(const std::vector<ListedEntry>& entries, Shown next);
  View makeContent(View tabs);
  View makeTabs(const std::vector<ListedEntry>& entries);
  void arrange(std::vector<KeptView>& views, const std::vector<ListedEntry>& entries);
  View makeTab(const SharedEntry& entry, const StripLayout& layout);
  Menu zoneMenu();
  Menu tabMenu(const StripEntry& entry);
  void activate(std::vector<UUID> tabIDs);

  AppKitRect targetFrame(bool expanded) const;
  bool autoHides() const;
  bool shouldBeExpanded() const;
  void place();
  void slide(bool expanded);
  void hoverChanged(bool inside);
  void pointerArrived();
  void pointerLeft();
  void collapse();
  bool isPointerBehind() const;
  void waitForPointer();

  void beginDrag();
  void drag(AppKitVector movedBy);
  void endDrag();

  void tabHoverChanged(const StripEntry& entry, bool inside);
  std::optional<std::size_t> tabWith(const std::vector<UUID>& tabIDs) const;
  std::optional<TabPreview> makePreview(const std::vector<UUID>& tabIDs);
  void updatePreview();

  Surroundings around_;
  std::unique_ptr<Panel> panel_;
  TabPreviewPanel preview_;
  std::vector<UUID> previewing_;  // the tabs of the entry whose preview is to be seen
  std::optional<Shown> shown_;
  std::vector<Tab> tabs_;  // as they are shown
  View content_;
  StripGeometry geometry_{{}, {}};
  StripChrome chrome_;
  bool isExpanded_ = true;
  bool isHovered_ = false;              // also while a menu of the strip is open
  std::optional<AppKitPoint> restsAt_;  // the pointer, when other tabs came
  Seconds slidesUntil_ = 0;
  Subscription collapseWork_;
  std::vector<Subscription> pointerMoves_;  // while the pointer is behind the strip
  std::optional<Drag> drag_;
  Subscription dropWork_;
};

}  // namespace pellow
