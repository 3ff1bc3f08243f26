#pragma once

#include <map>
#include <optional>
#include <vector>

#include "access/displays.h"
#include "base/geometry.h"
#include "base/uuid.h"
#include "capture/flight_animator.h"
#include "engine/parking_places.h"
#include "model/preferences.h"
#include "model/tab_item.h"
#include "strips/tab_strip_controller.h"

namespace pellow {

// The pictures that fly between windows and their tabs, if the user wants them: the window's own,
// else the application's icon. A minimized window has the system's animation instead, and nothing
// flies above a locked screen. Frames are in AppKit space. Main thread.
class Flights {
 public:
  struct Surroundings {
    FlightAnimator& animator;
    const Displays& displays;
    const ParkingPlaces& places;
    const Preferences& preferences;
    const TabStripController& strips;
  };

  explicit Flights(const Surroundings& surroundings) : around_(surroundings) {}

  // Where a tab about to come will stand; nothing when nothing will fly there.
  std::optional<AppKitRect> projectedTabFrame(const TabItem& tab);
  // Where these tabs stand; empty when nothing will fly from there.
  std::map<UUID, AppKitRect> tabFrames(const std::vector<UUID>& ids) const;

  void flyOut(const TabItem& tab, const AppKitRect& tabFrame);
  void flyBack(const TabItem& tab, const AppKitRect& tabFrame);

 private:
  bool isWanted() const;

  Surroundings around_;
};

}  // namespace pellow
