#pragma once

#include <functional>
#include <optional>

#include "access/ax_queue.h"
#include "access/displays.h"
#include "base/geometry.h"
#include "base/log.h"
#include "base/subscription.h"
#include "base/task.h"
#include "base/uuid.h"
#include "engine/parked_windows.h"
#include "engine/parking_places.h"
#include "model/tab_item.h"
#include "model/tab_store.h"
#include "model/zone_store.h"
#include "platform/clock.h"
#include "platform/queues.h"
#include "platform/screens.h"
#include "platform/workspace.h"

namespace pellow {

// Windows are parked beyond the displays as these were then. When displays come, go or move, this
// parks the windows anew, so that none stands in the middle of a new one. Main thread.
class ParkingUpkeep {
 public:
  struct Surroundings {
    AXQueue& axQueue;
    Clock& clock;
    const Displays& displays;
    const Log& log;
    MainQueue& mainQueue;
    ParkedWindows& parkedWindows;
    const ParkingPlaces& places;
    Screens& screens;
    const TabStore& tabs;
    TaskScope& tasks;
    Workspace& workspace;
    const ZoneStore& zones;
  };

  explicit ParkingUpkeep(const Surroundings& surroundings) : around_(surroundings) {}

  // Called with the tab of a window that stays in sight wherever it is moved.
  std::function<void(UUID tab)> onStaysInSight;

  // Begins to follow the displays. Once.
  void start();

  // The tab of the window that is on its way, if one is.
  const std::optional<TabItem>& moving() const { return moving_; }

 private:
  void begin();
  void beginLater();
  Task<> parkAnew();
  Task<> move(const TabItem& tab, QuartzPoint target);
  QuartzPoint place(const TabItem& tab) const;

  Surroundings around_;
  bool isUnderWay_ = false;
  std::optional<TabItem> moving_;
  Subscription changes_;
  Subscription soon_;
  Subscription later_;
  Subscription askAgain_;  // while an application does not answer
};

}  // namespace pellow
