#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/uuid.h"
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

  // Shows these entries of the zone at the zone's place on the display; does nothing if they are
  // shown already.
  void render(const SharedEntries& entries, const Screen& screen, const TabZone& zone);
  // The next call of `render` does something in any case.
  void renderAnew() { isStale_ = true; }

 private:
  // All that the look of the panel depends on.
  struct Shown {
    SharedEntries entries;
    Screen screen;
    TabZone zone;
    bool pictureTabs = false;
    bool floatsAboveWindows = false;

    bool operator==(const Shown& other) const;
  };

  View makeContent(const StripGeometry& geometry, const StripChrome& chrome) const;
  View makeTabs(const StripGeometry& geometry, const StripChrome& chrome) const;
  void activate(UUID firstTab) const;

  const Preferences& preferences_;
  std::unique_ptr<Panel> panel_;
  std::optional<Shown> shown_;
  bool isStale_ = false;
};

}  // namespace pellow
