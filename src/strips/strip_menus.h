#pragma once

#include <functional>
#include <string>

#include "model/zone_store.h"
#include "platform/menu.h"
#include "platform/system_colours.h"
#include "strips/strip_callbacks.h"
#include "strips/strip_entry.h"
#include "strips/zone_colour_editor.h"

namespace pellow {

// The context menus of strips. Their items know tabs and zones by id, and act on what these are
// when chosen; they outlive the strip that showed them. Main thread.
class StripMenus {
 public:
  // All of it outlives the menus.
  struct Surroundings {
    ZoneStore& zones;
    const StripCallbacks& callbacks;
    ZoneColourEditor& colours;
    const SystemColours& systemColours;
    // Shows the strips anew.
    std::function<void()> refresh;
  };

  explicit StripMenus(Surroundings surroundings) : around_(std::move(surroundings)) {}

  // Of a tab.
  Menu menu(const StripEntry& entry) const;

  // Of the strip itself.
  Menu zoneMenu(const TabZone& zone) const;

 private:
  Menu sizes(const StripEntry& entry) const;
  Menu destinations(const StripEntry& entry) const;
  MenuItem pin(const StripEntry& entry) const;
  void togglePin(const std::string& bundleID, UUID zoneID) const;
  Menu colours(const TabZone& zone) const;
  Menu iconSizes(const TabZone& zone) const;
  // An item that changes the zone.
  template <class Change>
  MenuItem zoneItem(std::string title, bool isChecked, UUID zoneID, Change change) const;

  Surroundings around_;
};

}  // namespace pellow
