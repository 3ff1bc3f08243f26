#pragma once

#include <functional>
#include <unordered_map>
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
  DestroyedWindowWatcher(Accessibility& accessibility, MainQueue& mainQueue)
      : accessibility_(accessibility), mainQueue_(mainQueue) {}

  // Called on the main queue, never from within `watch`.
  std::function<void(UUID tab)> onDestroyed;

  // Watches the windows of exactly these tabs from now on.
  void watch(const std::vector<TabItem>& tabs);

 private:
  struct Watched {
    Subscription observer;
    int round = 0;  // the last one that knew its tab
  };

  Subscription observe(const TabItem& tab);

  Accessibility& accessibility_;
  MainQueue& mainQueue_;
  std::unordered_map<UUID, Watched> watched_;
  int round_ = 0;
};

}  // namespace pellow
