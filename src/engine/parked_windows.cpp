#include "engine/parked_windows.h"

#include <unordered_set>
#include <utility>

namespace pellow {

bool ParkedWindows::record(const TabItem& tab, QuartzPoint parkedOrigin) {
  if (!tab.bundleID) return true;
  recorded_.push_back(
      {tab.id, {*tab.bundleID, tab.title, tab.originalFrame->origin, parkedOrigin}});
  if (write()) return true;
  forget(tab);
  return false;
}

void ParkedWindows::forget(const TabItem& tab) {
  if (std::erase_if(recorded_, [&](const Recorded& each) { return each.tab == tab.id; }) > 0)
    write();
}

void ParkedWindows::dropStaleRecords() {
  if (recorded_.empty()) return;
  std::unordered_set<UUID> tabs;
  for (const auto& entry : ledger_.entries())
    if (entry.tab) tabs.insert(entry.tab->id);
  for (const auto& tab : store_.tabs()) tabs.insert(tab.id);
  const auto isStale = [&](const Recorded& each) { return !tabs.contains(each.tab); };
  if (std::erase_if(recorded_, isStale) > 0) write();
}

bool ParkedWindows::write() {
  std::vector<ParkingRecord> records;
  records.reserve(recorded_.size());
  for (const auto& each : recorded_) records.push_back(each.record);
  return journal_.write(std::move(records));
}

}  // namespace pellow
