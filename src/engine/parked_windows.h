#pragma once

#include <vector>

#include "base/uuid.h"
#include "engine/departure.h"
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

  // Before these windows move to where each is `recordedAt`, in one write: false, and nothing is
  // recorded, when it cannot be kept.
  bool record(const std::vector<const Departure*>& departures);

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
  };

  bool write();

  ParkingJournal& journal_;
  const TabStore& store_;
  const Ledger& ledger_;
  std::vector<Recorded> recorded_;  // in the order in which they were parked
};

}  // namespace pellow
