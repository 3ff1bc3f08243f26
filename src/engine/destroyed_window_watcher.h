#pragma once

#include <functional>
#include <unordered_map>
#include <vector>

#include "access/ax_queue.h"
#include "base/subscription.h"
#include "base/task.h"
#include "base/uuid.h"
#include "model/tab_item.h"
#include "platform/accessibility.h"

namespace pellow {

// Notices when the window of a tab is closed or otherwise gone. Observers are added on the AX
// queue, so that nothing waits for a slow application. Main thread.
class DestroyedWindowWatcher {
 public:
  DestroyedWindowWatcher(AXQueue& axQueue, TaskScope& tasks, Accessibility& accessibility)
      : axQueue_(axQueue), tasks_(tasks), accessibility_(accessibility) {}

  // Called on the main queue, never from within `watch`.
  std::function<void(UUID tab)> onDestroyed;

  // Watches the windows of exactly these tabs from now on.
  void watch(const std::vector<TabItem>& tabs);

 private:
  struct Watched {
    Subscription observer;
    int round = 0;  // the last one with its tab
  };

  Task<> observe(UUID tab, AXElement window);

  AXQueue& axQueue_;
  TaskScope& tasks_;
  Accessibility& accessibility_;
  std::unordered_map<UUID, Watched> watched_;
  int round_ = 0;
};

}  // namespace pellow
