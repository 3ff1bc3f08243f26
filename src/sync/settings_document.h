#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/uuid.h"
#include "model/preferences.h"
#include "model/tab_zone.h"
#include "model/zone_store.h"
#include "shortcuts/shortcut_store.h"

namespace pellow {

// What the settings file holds:
//
//   { "defaultZoneID": UUID, may be absent
//     "pins":          {bundle identifier: UUID of a zone, …},
//     "preferences":   {key: {"bool": {"_0": true}} | {"number": {"_0": 3}} | {"text": {"_0": ""}},
//     …}, "shortcuts":     {action: shortcut, …}, "zones":         [zone, …] }
struct SettingsDocument {
  std::optional<UUID> defaultZoneID;
  ZoneStore::Pins pins;
  Preferences::Values preferences;
  ShortcutStore::Overrides shortcuts;
  std::vector<TabZone> zones;

  // The same bytes for the same contents; preferences that are no truth, finite number or text are
  // left out. Nothing when a text is not UTF-8.
  std::optional<std::string> encoded() const;

  // Nothing unless all of it is as above.
  static std::optional<SettingsDocument> decoded(std::string_view bytes);
};

}  // namespace pellow
