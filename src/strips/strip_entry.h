#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/uuid.h"
#include "platform/image.h"
#include "platform/screens.h"
#include "strips/strip_layout.h"

namespace pellow {

// One tab as a strip draws it. May stand for several tabs of one application.
struct StripEntry {
  std::string title;    // shown when `showsTitle`
  std::string tooltip;  // the window titles, one per line
  std::optional<Image> icon;
  std::optional<Image> image;         // on a tab that shows its window
  std::optional<Image> previewImage;  // in the preview of the tab
  std::size_t count = 1;              // of tabs it stands for
  std::vector<UUID> tabIDs;           // in the order of the tab store
  UUID zoneID;
  double size = 0;          // points
  bool hasOwnSize = false;  // the tabs' size, not the zone's or the preference's
  bool showsTitle = false;
  bool hasOwnTitleSetting = false;  // likewise for `showsTitle`
  std::optional<DisplayID> screenID;
  std::optional<std::string> appName;
  std::optional<std::string> bundleID;
  bool isPinned = false;  // the application is pinned to this zone

  bool operator==(const StripEntry&) const = default;
};

using SharedEntry = std::shared_ptr<const StripEntry>;

}  // namespace pellow
