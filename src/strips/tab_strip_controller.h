#pragma once

#include <compare>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/geometry.h"
#include "base/notification_center.h"
#include "base/subscription.h"
#include "base/uuid.h"
#include "model/preferences.h"
#include "model/tab_store.h"
#include "model/zone_store.h"
#include "platform/clock.h"
#include "platform/colour_panel.h"
#include "platform/event_monitors.h"
#include "platform/panels.h"
#include "platform/queues.h"
#include "platform/screens.h"
#include "platform/system_colours.h"
#include "strips/strip_callbacks.h"
#include "strips/strip_entries.h"
#include "strips/strip_entry.h"
#include "strips/strip_geometry.h"
#include "strips/strip_menus.h"
#include "strips/tab_strip_panel.h"
#include "strips/zone_colour_editor.h"

namespace pellow {

// Keeps one strip panel for every zone on every display that shows it, follows the stores, the
// preferences and the displays, and reports what the user does on a strip. Main thread.
class TabStripController : public StripCallbacks {
 public:
  // What the strips show and where; all of it outlives the controller.
  struct Surroundings {
    const TabStore& tabs;
    ZoneStore& zones;
    const Preferences& preferences;
    Clock& clock;
    MainQueue& mainQueue;
    Screens& screens;
    Panels& panels;
    EventMonitors& pointer;
    ColourPanel& colourPanel;
    const SystemColours& systemColours;
    NotificationCenter& notifications;
  };

  explicit TabStripController(const Surroundings& surroundings);
  TabStripController(const TabStripController&) = delete;
  TabStripController& operator=(const TabStripController&) = delete;

  // Shows the strips and begins to follow. Once, after launch.
  void start();

  // Gives every panel what it should show now, even one whose display was the main one when it was
  // made and is not any more. Tabs that come and go by the hundred are shown once per frame of the
  // display, the first at once.
  void refresh();

  // The entries of one zone, in the order of the tab store.
  std::vector<StripEntry> entries(UUID zoneID) const;

  // The displays that show a zone: all of them if the user wants that, else the zone's own, else
  // the main one.
  std::vector<Screen> screens(const TabZone& zone) const;

  // Where a new tab of the zone would appear; nothing when the zone has no panel.
  std::optional<AppKitRect> projectedTabFrame(UUID zoneID) const;

  // Where the tab's entry is, on the first display with a panel of its zone; nothing when none
  // shows it.
  std::optional<AppKitRect> frame(UUID tabID) const;
  // The same for many tabs at once; those not shown are left out.
  std::map<UUID, AppKitRect> frames(std::span<const UUID> tabIDs) const;

 private:
  struct PanelKey {
    DisplayID display = 0;
    UUID zone;

    auto operator<=>(const PanelKey&) const = default;
  };

  void tabsDidChange();
  void rebuildPanels();
  void rebuildAndRefresh();
  std::unique_ptr<TabStripPanel> makePanel();
  std::vector<Screen> screensWithPanel(const TabZone& zone) const;
  StripEntries::Lists makeEntries() const;
  StripGeometry geometry(const std::vector<StripItem>& items, const TabZone& zone,
                         const Screen& screen) const;

  Surroundings around_;
  ZoneColourEditor colours_;
  StripMenus menus_;
  StripEntries entries_;
  std::map<PanelKey, std::unique_ptr<TabStripPanel>> panels_;
  std::vector<Subscription> subscriptions_;
  Subscription refreshSoon_;
  Seconds nextFrame_ = 0;  // when the tabs may be shown again
};

}  // namespace pellow
