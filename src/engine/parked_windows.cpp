#include "engine/parked_windows.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace pellow {

bool ParkedWindows::record(const std::vector<Place>& places) {
  auto all = recorded_;
  for (const auto& [tab, origin] : places) {
    if (!tab.bundleID) continue;
    const auto known = std::ranges::find(all, tab.id, &Recorded::tab);
    auto& recorded = known == all.end() ? all.emplace_back(tab.id) : *known;
    recorded.record = {*tab.bundleID, tab.title, tab.originalFrame->origin, origin};
  }
  if (all == recorded_) return true;
  auto before = std::exchange(recorded_, std::move(all));
  if (write()) return true;
  recorded_ = std::move(before);
  // The failed write may have reached the disk all the same.
  write();
  return false;
}

bool ParkedWindows::recordMove(const std::vector<Place>& places) {
  for (const auto& place : places) {
    const auto known = std::ranges::find(recorded_, place.tab.id, &Recorded::tab);
    if (known != recorded_.end()) leaving_.push_back(*known);
  }
  return record(places);
}

void ParkedWindows::haveMoved() {
  if (!std::exchange(leaving_, {}).empty()) write();
}

void ParkedWindows::forget(const TabItem& tab) {
  const auto isOfTab = [&](const Recorded& each) { return each.tab == tab.id; };
  std::erase_if(leaving_, isOfTab);
  if (std::erase_if(recorded_, isOfTab) > 0) write();
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
  records.reserve(recorded_.size() + leaving_.size());
  for (const auto* const list : {&recorded_, &leaving_})
    for (const auto& each : *list) records.push_back(each.record);
  return journal_.write(std::move(records));
}

}  // namespace pellow
