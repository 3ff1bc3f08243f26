#include "engine/parked_windows.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace pellow {
namespace {

bool hasRecord(const TabItem& tab) {
  return tab.mechanism == Mechanism::offscreen && tab.bundleID && tab.originalFrame;
}

bool isOf(const ParkingRecord& record, const TabItem& tab) {
  return tab.originalFrame->origin == record.originalOrigin && tab.title == record.title &&
         tab.bundleID == record.bundleID;
}

}  // namespace

template <class Use>
void ParkedWindows::forEachParked(Use use) const {
  for (const auto& entry : ledger_.entries())
    if (entry.tab && hasRecord(*entry.tab)) use(*entry.tab);
  for (const auto& tab : store_.tabs())
    if (hasRecord(tab)) use(tab);
}

bool ParkedWindows::record(const TabItem& tab, QuartzPoint parkedOrigin) {
  if (!hasRecord(tab)) return true;
  if (journal_.append({*tab.bundleID, tab.title, tab.originalFrame->origin, parkedOrigin}))
    return true;
  forget(tab);
  return false;
}

void ParkedWindows::forget(const TabItem& tab) {
  if (!hasRecord(tab)) return;
  std::vector<QuartzPoint> siblings;
  forEachParked([&](const TabItem& other) {
    if (other.id != tab.id && other.title == tab.title && other.bundleID == tab.bundleID)
      siblings.push_back(other.originalFrame->origin);
  });
  journal_.forget(*tab.bundleID, tab.title, std::move(siblings));
}

void ParkedWindows::dropStaleRecords() {
  std::vector<const TabItem*> parked;
  forEachParked([&](const TabItem& tab) { parked.push_back(&tab); });
  if (journal_.records().size() <= parked.size()) return;
  auto records = journal_.records();
  std::erase_if(records, [&](const ParkingRecord& record) {
    const auto owner =
        std::ranges::find_if(parked, [&](const TabItem* tab) { return isOf(record, *tab); });
    if (owner == parked.end()) return true;
    parked.erase(owner);
    return false;
  });
  journal_.write(std::move(records));
}

}  // namespace pellow
