#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <vector>

#include "access/ax_queue.h"
#include "access/displays.h"
#include "access/pellow_error.h"
#include "access/target_window.h"
#include "base/log.h"
#include "base/task.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "engine/departure.h"
#include "engine/echo_guard.h"
#include "engine/failure_reports.h"
#include "engine/flights.h"
#include "engine/focus_handover.h"
#include "engine/late_minimizes.h"
#include "engine/ledger.h"
#include "engine/mechanisms.h"
#include "engine/snapshots.h"
#include "model/preferences.h"
#include "model/tab_store.h"
#include "model/zone_store.h"
#include "platform/accessibility.h"
#include "platform/uuid_source.h"
#include "platform/workspace.h"

namespace pellow {

// An application and some of its windows.
struct AppWindows {
  RunningApplication application;
  std::vector<TargetWindow> windows;
  std::optional<UUID> zoneID;  // absent: where the application is pinned, else the default zone
};

// Puts windows away, from the request to the tab. Each task reports its windows' failures and
// passes over windows that have a tab or are on their way. Main thread.
class Departures {
 public:
  // How many windows go together: few enough that nobody can drag the last one elsewhere between
  // the look at the first and the move of the last.
  static constexpr std::size_t windowsTogether = 16;

  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    const Displays& displays;
    EchoGuard& echoes;
    FailureReports& failures;
    Flights& flights;
    FocusHandover& focus;
    LateMinimizes& lateMinimizes;
    Ledger& ledger;
    const Log& log;
    Mechanisms& mechanisms;
    const Preferences& preferences;
    Snapshots& snapshots;
    TabStore& tabs;
    TaskScope& tasks;
    const Texts& texts;
    UUIDSource& uuids;
    Workspace& workspace;
    const ZoneStore& zones;
    ProcessID ownProcess;
  };

  explicit Departures(const Surroundings& surroundings) : around_(surroundings) {}

  // The focused window of the frontmost application, or the whole application when the preferred
  // mechanism hides applications. A window just coming back goes once it has arrived; while one
  // leaves, the next waits until it has left the keyboard. Throws `noFocusedWindow`.
  Task<> pellowFocused(std::optional<ProcessID> frontmostApplication);

  // Without a mechanism: the preferred one. Without a zone: the application's pin, else the default
  // zone.
  Task<> pellow(TargetWindow window, std::optional<UUID> zoneID,
                std::optional<Mechanism> mechanism);

  // All windows of this window's application but those excluded.
  Task<> pellowApp(TargetWindow of, std::optional<UUID> zoneID,
                   std::vector<TargetWindow> excluding);
  Task<> pellowApps(std::vector<AppWindows> applications, std::vector<TargetWindow> excluding);

  // The window of this tab is minimized and stays so until the tab brings it back.
  void keepInDock(TabItem tab);

  // All tasks have been ended in the middle: nothing is under way any more, and nothing waits.
  void tasksHaveEnded();

  // A window has come back, or its return has failed.
  void aWindowIsBack();

 private:
  // A window that is to become a tab of this zone.
  struct Chosen {
    RunningApplication application;
    TargetWindow window;
    Mechanism mechanism;
    TabZone zone;
  };

  Task<> pellowByPreference(TargetWindow window);
  Task<> depart(std::vector<Chosen> windows);
  Task<> handOverFocus(bool haveAllLeft);
  Task<> pellowNextFocused();
  Task<std::vector<PellowError>> departTogether(std::vector<Chosen> windows);
  Task<> photograph(Departure& departure);
  Task<> leave(Departure& departure);
  Task<std::vector<WindowState>> read(std::vector<TargetWindow> windows);
  Task<bool> isMinimized(TargetWindow window);

  std::vector<Chosen> choose(const AppWindows& from, const std::vector<TargetWindow>& excluding);
  Mechanism practicable(Mechanism mechanism);
  void hideAgain(ProcessID pid);
  void setTab(Departure& departure, const Chosen& chosen, const WindowState& state);
  void publish(TabItem tab);
  bool isTaken(const TargetWindow& window) const;
  bool isLeavingKeyboard(const TargetWindow& window) const;
  bool isOnTheWayBack(const TargetWindow& window, Mechanism mechanism) const;
  bool hasTabForApp(ProcessID pid) const;
  TabZone chooseZone(const RunningApplication& application, std::optional<UUID> zoneID) const;

  Surroundings around_;
  std::vector<TargetWindow> waitForReturn_;
  int waitForFocus_ = 0;  // requests for the focused window
  int handovers_ = 0;     // under way
  bool hasToldOfKeeping_ = false;
};

}  // namespace pellow
