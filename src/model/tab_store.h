#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "base/notification_center.h"
#include "base/subscription.h"
#include "model/tab_item.h"
#include "platform/workspace.h"

namespace pellow {

// Which tab it is, and which of its states: another after every change, and no two tabs share one.
struct TabRevision {
  UUID id;
  std::uint64_t number = 0;
};

// All tabs, in the order they were added and are shown. In memory only, since a tab points at a
// live window. Observers may change the store while it posts. Main thread.
class TabStore {
 public:
  // Posted after every change.
  static constexpr const char* didChange = "pellow.tabsDidChange";

  // When an application ends its tabs go by themselves, with one notice even if it had none.
  TabStore(NotificationCenter& notifications, Workspace& workspace);

  const std::vector<TabItem>& tabs() const { return tabs_; }

  // The same tabs, at a glance: there may be thousands.
  const std::vector<TabRevision>& revisions() const { return revisions_; }

  // Nothing when there is no such tab; valid until the next change.
  const TabItem* tab(UUID id) const;

  // The tabs of an application.
  std::vector<UUID> idsOf(std::string_view bundleID) const;

  // Whether some tab stands for this window, whatever process either was recorded with.
  bool contains(const TargetWindow& window) const;

  // Each posts once, even with nothing to remove.
  void add(TabItem tab);
  void remove(const TabItem& tab);  // by its id
  void remove(std::span<const UUID> ids);

  // Each posts once per tab found, so not at all when there is none.
  void setShowsTitle(std::optional<bool> value, std::span<const UUID> ids);
  void setZone(UUID zoneID, std::span<const UUID> ids);
  void setSize(std::optional<double> size, std::span<const UUID> ids);  // points

  // Moves every tab of a zone to another; absent counts as a zone of its own. Posts once per tab
  // moved.
  void reassign(std::optional<UUID> fromZone, std::optional<UUID> to);

  // Drops these tabs, whose windows were found gone. Posts once if any was still there.
  void pruneDead(std::span<const UUID> dead);

 private:
  void appTerminated(ProcessID pid);
  template <class Matches>
  bool erase(Matches matches);
  template <class Matches, class Change>
  void change(Matches matches, Change change);
  void post() const;

  NotificationCenter& notifications_;
  std::vector<TabItem> tabs_;
  std::vector<TabRevision> revisions_;  // in the same order
  std::uint64_t lastRevision_ = 0;
  Subscription terminations_;
};

}  // namespace pellow
