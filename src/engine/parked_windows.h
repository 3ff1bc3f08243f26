#pragma once

#include <optional>
#include <vector>

#include "base/uuid.h"
#include "engine/ledger.h"
#include "engine/parking_journal.h"
#include "model/tab_item.h"
#include "model/tab_store.h"

namespace pellow {

// Keeps the journal in step with the tabs, whole or under way, whose windows are parked off-screen.
// A window whose application has no bundle identifier has no record. Main thread.
class ParkedWindows {
 public:
  ParkedWindows(ParkingJournal& journal, const TabStore& store, const Ledger& ledger)
      : journal_(journal), store_(store), ledger_(ledger) {}

  // A window that is about to move.
  struct Departure {
    const TabItem& tab;
    QuartzPoint parkedOrigin;
  };

  // Before the tab's window moves to `parkedOrigin`: false when that cannot be kept.
  bool record(const Departure& departure);

  // The same for windows that will move one after another, in one write. `record` must follow for
  // each, and has nothing left to do where this has succeeded.
  void recordAhead(const std::vector<Departure>& departures);

  // The tab's window is not parked any more.
  void forget(const TabItem& tab);

  // The tab's window could not be brought back and nobody is left to try: the record, if it has
  // one, outlives this run.
  void keepForNextLaunch(const TabItem& tab);

  // Drops records that belong to no tab: what closed windows and ended applications leave behind
  // would send the next launch looking for windows that do not exist.
  void dropStaleRecords();

 private:
  struct Recorded {
    UUID tab;
    ParkingRecord record;
    bool isAhead = false;  // its window has not begun to move
  };

  static std::optional<Recorded> recorded(const Departure& departure);
  bool write();

  ParkingJournal& journal_;
  const TabStore& store_;
  const Ledger& ledger_;
  std::vector<Recorded> recorded_;  // in the order in which they were parked
};

}  // namespace pellow
