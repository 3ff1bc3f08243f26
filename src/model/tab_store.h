#pragma once

#include <optional>
#include <span>
#include <vector>

#include "base/notification_center.h"
#include "base/subscription.h"
#include "model/tab_item.h"
#include "platform/workspace.h"

namespace pellow {

// All tabs, in the order in which they were added; strips show them in this order. Lives in memory
// only, since a tab points at a live window. Observers may change the store while it posts. Main
// thread.
class TabStore {
 public:
  // Posted after every change.
  static constexpr const char* didChange = "pellow.tabsDidChange";

  // Tabs of an application go by themselves when it ends, with one notice each time one ends.
  TabStore(NotificationCenter& notifications, Workspace& workspace);

  const std::vector<TabItem>& tabs() const { return tabs_; }

  // Nothing when there is no such tab; valid until the next change.
  const TabItem* tab(UUID id) const;

  // Whether some tab stands for this window, whatever process either was recorded with.
  bool contains(const TargetWindow& window) const;

  // Each posts once, whether or not it found something to remove.
  void add(TabItem tab);
  void remove(const TabItem& tab);  // by its id
  void remove(std::span<const UUID> ids);

  // Each posts once for every tab it found, so nothing when it found none.
  void setShowsTitle(std::optional<bool> value, std::span<const UUID> ids);
  void setZone(UUID zoneID, std::span<const UUID> ids);
  void setSize(std::optional<double> size, std::span<const UUID> ids);  // points

  // Moves every tab of a zone to another; absent is a zone of its own here. Posts once for every
  // tab moved.
  void reassign(std::optional<UUID> fromZone, std::optional<UUID> to);

  // Drops the tabs among these, whose windows were found to be gone. Posts once if any was dropped.
  void pruneDead(std::span<const UUID> dead);

 private:
  void appTerminated(ProcessID pid);
  template <class Matches, class Change>
  void change(Matches matches, Change change);
  void post() const;

  NotificationCenter& notifications_;
  std::vector<TabItem> tabs_;
  Subscription terminations_;
};

}  // namespace pellow
