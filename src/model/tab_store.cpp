#include "model/tab_store.h"

#include <algorithm>
#include <cstddef>
#include <unordered_set>
#include <utility>

namespace pellow {
namespace {

auto listedIn(std::span<const UUID> ids, const std::vector<TabRevision>& tabs) {
  return [listed = std::unordered_set<UUID>(ids.begin(), ids.end()), &tabs](std::size_t place) {
    return listed.contains(tabs[place].id);
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
  revisions_.push_back({tab.id, ++lastRevision_});
  tabs_.push_back(std::move(tab));
  post();
}

void TabStore::remove(const TabItem& tab) { remove({&tab.id, 1}); }

void TabStore::remove(std::span<const UUID> ids) {
  erase(listedIn(ids, revisions_));
  post();
}

void TabStore::setShowsTitle(std::optional<bool> value, std::span<const UUID> ids) {
  change(listedIn(ids, revisions_), [&](TabItem& tab) { tab.showsTitle = value; });
}

void TabStore::setZone(UUID zoneID, std::span<const UUID> ids) {
  change(listedIn(ids, revisions_), [&](TabItem& tab) { tab.zoneID = zoneID; });
}

void TabStore::setSize(std::optional<double> size, std::span<const UUID> ids) {
  change(listedIn(ids, revisions_), [&](TabItem& tab) { tab.size = size; });
}

void TabStore::reassign(std::optional<UUID> fromZone, std::optional<UUID> to) {
  change([&](std::size_t place) { return tabs_[place].zoneID == fromZone; },
         [&](TabItem& tab) { tab.zoneID = to; });
}

void TabStore::pruneDead(std::span<const UUID> dead) {
  if (erase(listedIn(dead, revisions_))) post();
}

void TabStore::appTerminated(ProcessID pid) {
  erase([&](std::size_t place) { return tabs_[place].window.pid == pid; });
  post();
}

template <class Matches>
bool TabStore::erase(Matches matches) {
  std::size_t left = 0;
  for (std::size_t place = 0; place < tabs_.size(); ++place) {
    if (matches(place)) continue;
    if (left != place) tabs_[left] = std::move(tabs_[place]);
    revisions_[left++] = revisions_[place];
  }
  const bool any = left < tabs_.size();
  tabs_.erase(tabs_.begin() + static_cast<std::ptrdiff_t>(left), tabs_.end());
  revisions_.resize(left);
  return any;
}

// Changes all tabs before the first notice, as an observer may change the list.
template <class Matches, class Change>
void TabStore::change(Matches matches, Change change) {
  int changed = 0;
  for (std::size_t place = 0; place < tabs_.size(); ++place) {
    if (!matches(place)) continue;
    change(tabs_[place]);
    revisions_[place].number = ++lastRevision_;
    ++changed;
  }
  for (; changed > 0; --changed) post();
}

void TabStore::post() const { notifications_.post(didChange); }

}  // namespace pellow
