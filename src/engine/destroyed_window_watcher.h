#pragma once

#include <functional>
#include <map>
#include <vector>

#include "base/subscription.h"
#include "base/uuid.h"
#include "model/tab_item.h"
#include "platform/accessibility.h"
#include "platform/queues.h"

namespace pellow {

// Hears when the window of a tab is closed or otherwise gone. Main thread.
class DestroyedWindowWatcher {
 public:
  // `onDestroyed` is called on the main queue, never from within `watch`.
  DestroyedWindowWatcher(Accessibility& accessibility, MainQueue& mainQueue,
                         std::function<void()> onDestroyed);

  // Watches the windows of exactly these tabs from now on.
  void watch(const std::vector<TabItem>& tabs);

 private:
  Subscription observe(const TabItem& tab);

  Accessibility& accessibility_;
  MainQueue& mainQueue_;
  std::function<void()> onDestroyed_;
  std::map<UUID, Subscription> observers_;
};

}  // namespace pellow
