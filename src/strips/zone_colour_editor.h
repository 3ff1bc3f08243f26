#pragma once

#include "base/subscription.h"
#include "base/uuid.h"
#include "model/zone_store.h"
#include "platform/colour_panel.h"

namespace pellow {

// Lets the user choose any colour for a zone, in the system's colour panel. Main thread.
class ZoneColourEditor {
 public:
  ZoneColourEditor(ColourPanel& panel, ZoneStore& zones) : panel_(panel), zones_(zones) {}

  // From now on each colour tried in the panel is the zone's.
  void edit(UUID zoneID);

 private:
  ColourPanel& panel_;
  ZoneStore& zones_;
  Subscription edits_;
};

}  // namespace pellow
