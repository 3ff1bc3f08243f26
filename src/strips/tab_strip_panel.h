#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "model/preferences.h"
#include "model/tab_zone.h"
#include "platform/panels.h"
#include "platform/screens.h"
#include "strips/strip_entry.h"
#include "strips/strip_geometry.h"

namespace pellow {

// The panel that shows one zone's tabs on one display. Main thread.
class TabStripPanel {
 public:
  TabStripPanel(Panels& panels, const Preferences& preferences);

  // The user clicked an entry that stands for these tabs.
  std::function<void(const std::vector<UUID>& tabIDs)> onActivate;

  // Shows these entries of the zone at the zone's place on the display.
  void render(const std::vector<StripEntry>& entries, const Screen& screen, const TabZone& zone);

 private:
  View makeContent(const std::vector<StripEntry>& entries, const StripGeometry& geometry,
                   const StripChrome& chrome, const TabZone& zone) const;
  View makeTabs(const std::vector<StripEntry>& entries, const StripGeometry& geometry,
                const StripChrome& chrome) const;

  const Preferences& preferences_;
  std::unique_ptr<Panel> panel_;
};

}  // namespace pellow
