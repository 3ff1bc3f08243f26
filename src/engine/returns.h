#pragma once

#include <functional>
#include <list>
#include <optional>
#include <vector>

#include "access/ax_queue.h"
#include "access/displays.h"
#include "base/geometry.h"
#include "base/log.h"
#include "base/task.h"
#include "base/uuid.h"
#include "engine/echo_guard.h"
#include "engine/failure_reports.h"
#include "engine/flights.h"
#include "engine/late_minimizes.h"
#include "engine/ledger.h"
#include "engine/mechanisms.h"
#include "engine/parked_windows.h"
#include "engine/parking_journal.h"
#include "engine/parking_upkeep.h"
#include "engine/tab_upkeep.h"
#include "model/preferences.h"
#include "model/tab_store.h"
#include "platform/clock.h"
#include "platform/screens.h"

namespace pellow {

// Brings windows back. Main thread.
class Returns {
 public:
  struct Surroundings {
    AXQueue& axQueue;
    Clock& clock;
    Displays& displays;
    EchoGuard& echoes;
    FailureReports& failures;
    Flights& flights;
    ParkingJournal& journal;
    const LateMinimizes& lateMinimizes;
    Ledger& ledger;
    const Log& log;
    Mechanisms& mechanisms;
    ParkedWindows& parkedWindows;
    const ParkingUpkeep& parkingUpkeep;
    const Preferences& preferences;
    const Screens& screens;
    TabStore& tabs;
    TaskScope& tasks;
    TabUpkeep& upkeep;
  };

  explicit Returns(const Surroundings& surroundings) : around_(surroundings) {}

  // Called for each window that was to come back, whether or not it did.
  std::function<void()> onArrived;

  // Brings back the windows of these tabs, in the order of the store, one by one. The tabs are gone
  // when this returns.
  void restore(const std::vector<UUID>& ids);

  // Ends every action, puts back every window that has a tab or may be hidden, without raising it,
  // and empties store and journal. What is not under way comes first, then what is, when the call
  // that runs has ended; windows whose application does not answer at once come last. One silence
  // stands for all windows of an application, so that one such application costs 5 s in all.
  void restoreAllBlocking();

  // The same for a program that goes on: a window that could not be brought back keeps its tab, or
  // gets it.
  void restoreAllAndGoOn();

 private:
  // A tab on its way back to being a window.
  struct Return {
    Ledger::Claim claim;
    std::optional<AppKitRect> tabFrame;  // on the screen, for its flight
  };

  // A window that has not come back, and why.
  struct Missing {
    TabItem tab;
    AXError reason;
  };

  Task<> restoreBatch(std::list<Return> returns);
  Task<> restore(const Return& each);
  std::vector<TabItem> underWay() const;
  std::vector<Missing> endAllAndPutBack();
  std::vector<Missing> putBackAll(const std::vector<TabItem>& tabs);
  std::vector<Missing> putBack(const std::vector<TabItem>& tabs, Seconds timeout);

  Surroundings around_;
};

}  // namespace pellow
