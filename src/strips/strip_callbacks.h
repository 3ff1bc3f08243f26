#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/uuid.h"
#include "model/strip_edge.h"
#include "model/tab_zone.h"
#include "platform/menu.h"
#include "platform/screens.h"

namespace pellow {

// What the user asks for on a strip. Each may be left out.
struct StripCallbacks {
  // Restore these tabs: their entry was clicked.
  std::function<void(const std::vector<UUID>& tabIDs)> onActivate;

  // Give these tabs a size of their own, in points, or none.
  std::function<void(const std::vector<UUID>& tabIDs, std::optional<double> size)> onSetSize;

  // Show or hide the titles of these tabs, or leave that to the preference.
  std::function<void(const std::vector<UUID>& tabIDs, std::optional<bool> showsTitle)>
      onSetShowsTitle;

  std::function<void(const std::vector<UUID>& tabIDs, UUID zoneID)> onSetZone;

  // The application was pinned to the zone: its tabs belong there.
  std::function<void(const std::string& bundleID, UUID zoneID)> onGatherPinned;

  // Pellow the other windows of this tab's application into the zone.
  std::function<void(UUID tabID, UUID zoneID)> onPellowRest;

  // The zone's strip was dropped there. Comes after the drag, not within it.
  std::function<void(UUID zoneID, ZonePosition position, std::optional<StripEdge> snap,
                     std::optional<DisplayID> displayID)>
      onMove;

  // What else the menu of a zone is to offer, below its own items. Asked each time it opens.
  std::function<std::vector<MenuItem>()> moreZoneItems;
};

// Calls a callback that may be left out.
template <class Callback, class... Arguments>
void callIfSet(const Callback& callback, Arguments&&... arguments) {
  if (callback) callback(std::forward<Arguments>(arguments)...);
}

}  // namespace pellow
