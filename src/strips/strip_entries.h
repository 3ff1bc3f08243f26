#pragma once

#include <map>
#include <vector>

#include "base/uuid.h"
#include "model/preferences.h"
#include "model/tab_item.h"
#include "model/zone_store.h"
#include "strips/strip_entry.h"

namespace pellow {

// What the strips show, by zone: every zone has its list, in the order of the tabs. A tab whose
// zone is gone goes to the default zone; where applications are put away whole, the tabs of one
// share an entry.
using StripEntries = std::map<UUID, SharedEntries>;

StripEntries makeStripEntries(const std::vector<TabItem>& tabs, const ZoneStore& zones,
                              const Preferences& preferences);

}  // namespace pellow
