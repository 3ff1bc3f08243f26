#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/notification_center.h"
#include "base/uuid.h"
#include "model/preferences.h"
#include "model/tab_zone.h"
#include "platform/user_defaults.h"
#include "platform/uuid_source.h"

namespace pellow {

// The zones, never fewer than one; the pins, which send the windows of an application into a zone;
// and the choice of the default zone. Every change goes to the user defaults at once; stored data
// that cannot be read is silently replaced. Observers may change the store while it posts. Main
// thread.
class ZoneStore {
 public:
  // Posted after every change of the zones.
  static constexpr const char* didChange = "pellow.zonesDidChange";

  using Pins = std::map<std::string, UUID, std::less<>>;  // bundle identifier to zone

  // With no zones stored, the first one stands where the preferences of an earlier version say.
  ZoneStore(UserDefaults& defaults, const Preferences& preferences,
            NotificationCenter& notifications, UUIDSource& uuids);

  const std::vector<TabZone>& zones() const { return zones_; }

  // Whether no zones were stored before: no program of ours has run with these user defaults.
  bool isNew() const { return isNew_; }

  // Whoever edits the pins calls `savePins()` afterwards.
  Pins pins;
  void savePins();  // posts nothing

  // The zone the user chose, else the first.
  TabZone defaultZone() const;
  void setDefaultZoneID(UUID id);

  // The zone with this id, else the default zone.
  TabZone zone(std::optional<UUID> id) const;

  std::optional<TabZone> pinnedZone(std::string_view bundleID) const;

  // A new zone at the right edge, lower than the one before; a name already taken gets a number
  // ("Zone 2").
  TabZone add(std::string_view name);

  // Replaces the zone with the same id; does and posts nothing if there is none.
  void update(const TabZone& zone);

  // Updates the zone with this id by `change(zone)`, likewise.
  template <class Change>
  void change(UUID id, Change change) {
    if (const auto* const found = find(id)) {
      auto zone = *found;
      change(zone);
      update(zone);
    }
  }

  // Removes the zone with its pins and answers the default zone after that, to which the caller
  // moves the tabs. Does and answers nothing for an unknown zone and for the last one.
  std::optional<UUID> remove(UUID id);

  // Takes the values of the settings file. Posts only if the zones changed.
  void applySynced(const std::vector<TabZone>& zones, const Pins& pins,
                   std::optional<UUID> defaultZoneID);

 private:
  void loadZones(const Preferences& preferences);
  void persist();
  void storeDefaultZoneID(UUID id);
  void post() const;
  const TabZone* find(UUID id) const;
  std::string uniqueName(std::string_view name) const;

  UserDefaults& defaults_;
  NotificationCenter& notifications_;
  UUIDSource& uuids_;
  std::vector<TabZone> zones_;
  bool isNew_ = false;
};

}  // namespace pellow
