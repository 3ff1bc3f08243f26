#include "model/tab_store.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace pellow {
namespace {

auto listedIn(std::span<const UUID> ids) {
  return [listed = std::unordered_set<UUID>(ids.begin(), ids.end())](const TabItem& tab) {
    return listed.contains(tab.id);
  };
}

}  // namespace

TabStore::TabStore(NotificationCenter& notifications, Workspace& workspace)
    : notifications_(notifications),
      terminations_(
          workspace.onDidTerminateApplication([this](ProcessID pid) { appTerminated(pid); })) {}

const TabItem* TabStore::tab(UUID id) const {
  const auto found = std::ranges::find(tabs_, id, &TabItem::id);
  return found == tabs_.end() ? nullptr : &*found;
}

std::vector<UUID> TabStore::idsOf(std::string_view bundleID) const {
  std::vector<UUID> ids;
  for (const auto& tab : tabs_)
    if (tab.bundleID == bundleID) ids.push_back(tab.id);
  return ids;
}

bool TabStore::contains(const TargetWindow& window) const {
  return std::ranges::find(tabs_, window, &TabItem::window) != tabs_.end();
}

void TabStore::add(TabItem tab) {
  tabs_.push_back(std::move(tab));
  post();
}

void TabStore::remove(const TabItem& tab) { remove({&tab.id, 1}); }

void TabStore::remove(std::span<const UUID> ids) {
  std::erase_if(tabs_, listedIn(ids));
  post();
}

void TabStore::setShowsTitle(std::optional<bool> value, std::span<const UUID> ids) {
  change(listedIn(ids), [&](TabItem& tab) { tab.showsTitle = value; });
}

void TabStore::setZone(UUID zoneID, std::span<const UUID> ids) {
  change(listedIn(ids), [&](TabItem& tab) { tab.zoneID = zoneID; });
}

void TabStore::setSize(std::optional<double> size, std::span<const UUID> ids) {
  change(listedIn(ids), [&](TabItem& tab) { tab.size = size; });
}

void TabStore::reassign(std::optional<UUID> fromZone, std::optional<UUID> to) {
  change([&](const TabItem& tab) { return tab.zoneID == fromZone; },
         [&](TabItem& tab) { tab.zoneID = to; });
}

void TabStore::pruneDead(std::span<const UUID> dead) {
  if (std::erase_if(tabs_, listedIn(dead)) > 0) post();
}

void TabStore::appTerminated(ProcessID pid) {
  std::erase_if(tabs_, [&](const TabItem& tab) { return tab.window.pid == pid; });
  post();
}

// Changes all tabs before the first notice, as an observer may change the list.
template <class Matches, class Change>
void TabStore::change(Matches matches, Change change) {
  int changed = 0;
  for (auto& tab : tabs_) {
    if (!matches(tab)) continue;
    change(tab);
    ++changed;
  }
  for (; changed > 0; --changed) post();
}

void TabStore::post() const { notifications_.post(didChange); }

}  // namespace pellow
