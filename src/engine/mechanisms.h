#pragma once

#include <expected>
#include <functional>
#include <list>
#include <optional>

#include "access/ax_queue.h"
#include "access/displays.h"
#include "access/pellow_error.h"
#include "base/log.h"
#include "base/task.h"
#include "base/texts.h"
#include "engine/departure.h"
#include "engine/echo_guard.h"
#include "engine/parked_windows.h"
#include "engine/parking_places.h"
#include "model/tab_item.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/workspace.h"

namespace pellow {

// The three ways to put a window away, and the way back from each. Knows windows and the journal,
// nothing of stores. Main thread; calls into other applications run on the AX queue.
class Mechanisms {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    Clock& clock;
    const Displays& displays;
    EchoGuard& echoes;
    const Log& log;
    ParkedWindows& parkedWindows;
    const ParkingPlaces& places;
    const Texts& texts;
    Workspace& workspace;
  };

  explicit Mechanisms(const Surroundings& surroundings) : around_(surroundings) {}

  // How an attempt to hide a window ended.
  struct Hiding {
    bool mayBeHidden = false;            // it needs its tab
    std::optional<PellowError> failure;  // for the user; possible even if the window is hidden
  };

  // Writes the records of several windows at once, before the first of them is hidden.
  void record(std::list<Departure>& departures);

  // Hides the window by the tab's mechanism; one that slides and has no record gets one first. A
  // window that would stay in sight is put back.
  Task<Hiding> hide(Departure& departure);

  // Undoes it, raises the window and activates its application. Throws when the window is not back;
  // a failed raise is only logged.
  Task<> reveal(const TabItem& tab);

  // Raises the window and activates its application; a failed raise is only logged.
  Task<> bringToFront(const TargetWindow& window);

  // Undoes it on the calling thread, without raise and activation; the answer tells whether the
  // application answered within `timeout`.
  std::expected<void, AXError> revealBlocking(const TabItem& tab, Seconds timeout);

 private:
  Task<Hiding> minimize(const TabItem& tab);
  Task<Hiding> slideOffscreen(Departure& departure);
  Task<Hiding> hideApplication(ProcessID pid);
  Task<std::optional<bool>> isHidden(ProcessID pid, bool expected);
  Task<bool> slideBack(const TabItem& tab);
  // How a window arrived that was to be seen again.
  enum class Arrival { inSight, outOfSight, withoutDisplay };
  using Place = std::function<QuartzPoint()>;
  Task<Arrival> moveIntoSight(const TabItem& tab, Place place);
  Task<> moveHome(const TabItem& tab);
  Task<> unminimize(const TargetWindow& window);
  Task<> unminimizeIfNeeded(const TargetWindow& window);

  Surroundings around_;
};

}  // namespace pellow
