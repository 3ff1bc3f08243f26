#include "engine/parked_windows.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace pellow {

std::optional<ParkedWindows::Recorded> ParkedWindows::recorded(const Departure& departure) {
  const auto& tab = departure.tab;
  if (!tab.bundleID) return std::nullopt;
  return Recorded{tab.id,
                  {*tab.bundleID, tab.title, tab.originalFrame->origin, departure.parkedOrigin}};
}

bool ParkedWindows::record(const Departure& departure) {
  auto entry = recorded(departure);
  if (!entry) return true;
  const auto ahead = std::ranges::find(recorded_, entry->tab, &Recorded::tab);
  if (ahead != recorded_.end() && ahead->record == entry->record) {
    ahead->isAhead = false;
    return true;
  }
  if (ahead != recorded_.end()) recorded_.erase(ahead);
  recorded_.push_back(std::move(*entry));
  if (write()) return true;
  forget(departure.tab);
  return false;
}

void ParkedWindows::recordAhead(const std::vector<Departure>& departures) {
  const auto before = recorded_.size();
  for (const auto& departure : departures)
    if (auto entry = recorded(departure)) recorded_.push_back(std::move(*entry));
  for (auto entry = recorded_.begin() + before; entry != recorded_.end(); ++entry)
    entry->isAhead = true;
  // What is not kept is written once more by itself.
  if (recorded_.size() > before && !write()) recorded_.resize(before);
}

void ParkedWindows::forget(const TabItem& tab) {
  if (std::erase_if(recorded_, [&](const Recorded& each) { return each.tab == tab.id; }) > 0)
    write();
}

void ParkedWindows::keepForNextLaunch(const TabItem& tab) {
  const auto found = std::ranges::find(recorded_, tab.id, &Recorded::tab);
  if (found != recorded_.end()) journal_.keepForNextLaunch(found->record);
}

void ParkedWindows::dropStaleRecords() {
  if (recorded_.empty()) return;
  std::unordered_set<UUID> tabs;
  for (const auto& entry : ledger_.entries())
    if (entry.tab) tabs.insert(entry.tab->id);
  for (const auto& tab : store_.tabs()) tabs.insert(tab.id);
  const auto isStale = [&](const Recorded& each) {
    return !each.isAhead && !tabs.contains(each.tab);
  };
  if (std::erase_if(recorded_, isStale) > 0) write();
}

bool ParkedWindows::write() {
  std::vector<ParkingRecord> records;
  records.reserve(recorded_.size());
  for (const auto& each : recorded_) records.push_back(each.record);
  return journal_.write(std::move(records));
}

}  // namespace pellow
