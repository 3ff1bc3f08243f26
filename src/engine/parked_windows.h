#pragma once

#include <vector>

#include "base/geometry.h"
#include "base/uuid.h"
#include "engine/ledger.h"
#include "engine/parking_journal.h"
#include "model/tab_item.h"
#include "model/tab_store.h"

namespace pellow {

// Keeps the journal in step with the tabs, finished or under way, whose windows are parked
// off-screen. Windows of applications without a bundle identifier have no record. Main thread.
class ParkedWindows {
 public:
  ParkedWindows(ParkingJournal& journal, const TabStore& store, const Ledger& ledger)
      : journal_(journal), store_(store), ledger_(ledger) {}

  // Where the window of a tab is going to be parked.
  struct Place {
    const TabItem& tab;
    QuartzPoint origin;
  };

  // Records, in one write and before they move, where these windows are parked, in place of earlier
  // records of the same tabs. False, with nothing recorded, when that cannot be kept.
  bool record(const std::vector<Place>& places);

  // The same for windows that are parked elsewhere now: what was recorded of them before stays,
  // too, until `haveMoved`.
  bool recordMove(const std::vector<Place>& places);
  void haveMoved();

  // The tab's window is no longer parked.
  void forget(const TabItem& tab);

  // The tab's window could not be brought back and the process ends: its record, if any, outlives
  // this run.
  void keepForNextLaunch(const TabItem& tab);

  // Drops records that belong to no tab: what closed windows and ended applications leave behind
  // would send the next launch looking for windows that do not exist.
  void dropStaleRecords();

 private:
  struct Recorded {
    UUID tab;
    ParkingRecord record;

    bool operator==(const Recorded&) const = default;
  };

  bool write();

  ParkingJournal& journal_;
  const TabStore& store_;
  const Ledger& ledger_;
  std::vector<Recorded> recorded_;  // in the order parked
  std::vector<Recorded> leaving_;   // before the move that is under way
};

}  // namespace pellow
