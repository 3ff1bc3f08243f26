#pragma once

#include <array>
#include <functional>
#include <map>
#include <vector>

#include "access/ax_queue.h"
#include "access/target_window.h"
#include "base/subscription.h"
#include "base/task.h"
#include "platform/accessibility.h"
#include "platform/workspace.h"

namespace pellow {

// Notices when a window of another application is minimized, by whatever means, and when an
// application's focus moves to another window. Follows applications as they come and go; one that
// takes no observer, as may happen while it starts, is asked again whenever it becomes active.
// Observers are added on the AX queue, so that nothing waits for a slow application. Main thread.
class MinimizeWatcher {
 public:
  MinimizeWatcher(AXQueue& axQueue, TaskScope& tasks, Accessibility& accessibility,
                  Workspace& workspace, ProcessID ownProcess);

  std::function<void(TargetWindow)> onMinimized;
  std::function<void(TargetWindow)> onFocused;

  void start();
  void stop();

  // Ordinary applications only, never this process, each once.
  void watch(const RunningApplication& application);
  void unwatch(ProcessID pid);

 private:
  using Observers = std::array<Subscription, 2>;
  struct Watched {
    Observers observers;   // those it has taken
    bool isAsked = false;  // for the missing ones, just now
  };

  void watch(ProcessID pid);
  Task<> observe(ProcessID pid);
  // Adds the missing ones.
  void add(Observers& observers, ProcessID pid);

  AXQueue& axQueue_;
  TaskScope& tasks_;
  Accessibility& accessibility_;
  Workspace& workspace_;
  const ProcessID ownProcess_;
  std::map<ProcessID, Watched> watched_;
  std::vector<Subscription> workspaceTokens_;
};

}  // namespace pellow
