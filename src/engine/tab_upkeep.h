#pragma once

#include <vector>

#include "access/ax_queue.h"
#include "base/log.h"
#include "base/notification_center.h"
#include "base/subscription.h"
#include "base/task.h"
#include "base/uuid.h"
#include "engine/destroyed_window_watcher.h"
#include "engine/parked_windows.h"
#include "model/tab_store.h"
#include "platform/accessibility.h"
#include "platform/queues.h"

namespace pellow {

// Drops tabs whose windows are certainly gone, and their records. A tab that stands for a hidden
// application stays until that ends. Main thread.
class TabUpkeep {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    MainQueue& mainQueue;
    NotificationCenter& notifications;
    ParkedWindows& parkedWindows;
    TabStore& tabs;
    TaskScope& tasks;
  };

  explicit TabUpkeep(const Surroundings& surroundings);

  // Begins to follow the tabs. Once.
  void start();

  // Asks the windows of all tabs.
  Task<> pruneDead() { return pruneDead(around_.tabs.tabs()); }

 private:
  void tabsDidChange();
  void windowMayBeGone(UUID tab);
  Task<> pruneDead(std::vector<TabItem> tabs);

  Surroundings around_;
  DestroyedWindowWatcher destroyedWindows_;
  Subscription following_;
  Subscription soon_;
};

}  // namespace pellow
