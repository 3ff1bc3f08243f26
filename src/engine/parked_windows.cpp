#include "engine/parked_windows.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace pellow {

bool ParkedWindows::record(const std::vector<const Departure*>& departures) {
  auto all = recorded_;
  bool isNew = false;
  for (const auto* departure : departures) {
    const auto& tab = departure->tab();
    if (!tab.bundleID) continue;
    std::erase_if(all, [&](const Recorded& each) { return each.tab == tab.id; });
    all.push_back(
        {tab.id, {*tab.bundleID, tab.title, tab.originalFrame->origin, *departure->recordedAt}});
    isNew = true;
  }
  if (!isNew) return true;
  auto before = std::exchange(recorded_, std::move(all));
  if (write()) return true;
  recorded_ = std::move(before);
  // The failed write may have reached the disk all the same.
  write();
  return false;
}

void ParkedWindows::forget(const TabItem& tab) {
  if (std::erase_if(recorded_, [&](const Recorded& each) { return each.tab == tab.id; }) > 0)
    write();
}

void ParkedWindows::keepForNextLaunch(const TabItem& tab) {
  const auto found = std::ranges::find(recorded_, tab.id, &Recorded::tab);
  if (found != recorded_.end()) journal_.keep(found->record);
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
