#pragma once

#include <optional>
#include <string>

#include "access/target_window.h"
#include "base/geometry.h"
#include "base/uuid.h"
#include "model/mechanism.h"
#include "platform/image.h"
#include "platform/screens.h"

namespace pellow {

// One pellowed window: enough to show its tab, to place it, and to put the window back.
struct TabItem {
  // Fixed when the tab is made, as things were then.
  UUID id;
  TargetWindow window;
  std::string appName;
  std::optional<std::string> bundleID;
  std::string title;  // may be empty
  std::optional<Image> icon;
  Mechanism mechanism = Mechanism::offscreen;
  std::optional<DisplayID> screenID;        // where the window was
  std::optional<QuartzRect> originalFrame;  // before it was put away
  std::optional<Image> snapshot;

  // Changed through the store.
  std::optional<double> size;      // points; absent: the zone's, else the preference
  std::optional<UUID> zoneID;      // absent: the default zone
  std::optional<bool> showsTitle;  // absent: the preference

  // Such a tab outlives its window: the application's other windows are hidden with it.
  bool standsForApp() const { return mechanism == Mechanism::hideApp; }

  bool operator==(const TabItem&) const = default;
};

}  // namespace pellow
