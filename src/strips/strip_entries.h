#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "base/uuid.h"
#include "model/preferences.h"
#include "model/tab_store.h"
#include "model/zone_store.h"
#include "strips/strip_entry.h"

namespace pellow {

// An entry in its list, with what is asked of it at every render at hand: there may be thousands.
struct ListedEntry {
  UUID id;                     // of its first tab
  std::uint64_t revision = 0;  // of its tab; 0 where it may stand for several
  StripItem item;
  SharedEntry entry;
};

// What the geometry of a strip needs to know of its entries.
std::vector<StripItem> items(const std::vector<ListedEntry>& entries);

// What the strips show, by zone: every zone has its list, in the order of the tabs. A tab whose
// zone is gone goes to the default zone; where applications are put away whole, the tabs of one
// share an entry.
class StripEntries {
 public:
  using Lists = std::map<UUID, std::vector<ListedEntry>>;

  // What has not changed since the last update is the same object as then.
  const Lists& update(const TabStore& tabs, const ZoneStore& zones, const Preferences& preferences);

 private:
  class Update;

  // What an entry depends on besides its tabs.
  struct Rules {
    ZoneStore::Pins pins;
    std::map<UUID, double> tabSizes;  // by zone
    UUID defaultZone;
    bool groups = false;
    bool showsTitles = false;

    bool operator==(const Rules&) const = default;

    static Rules of(const ZoneStore& zones, const Preferences& preferences);
  };

  Rules rules_;
  Lists lists_;
};

}  // namespace pellow
