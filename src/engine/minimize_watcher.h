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

// Hears when a window of another application is minimized, by whatever means, and when an
// application's focus goes to another window. Follows applications as they come and go; one that
// takes no observer, as it may while it starts, is asked again whenever it becomes active.
// Observers are added on the AX queue, so that nobody waits for an application that takes its time.
// Main thread.
class MinimizeWatcher {
 public:
  MinimizeWatcher(AXQueue& axQueue, TaskScope& tasks, Accessibility& accessibility,
                  Workspace& workspace, ProcessID ownProcess);

  std::function<void(TargetWindow)> onMinimized;
  std::function<void(TargetWindow)> onFocused;

  void start();
  void stop();

  // Ordinary applications only, never this process; once.
  void watch(const RunningApplication& application);
  void unwatch(ProcessID pid);

 private:
  using Observers = std::array<Subscription, 2>;
  struct Watched {
    Observers observers;   // those that it has taken
    bool isAsked = false;  // for the others, just now
  };

  void watch(ProcessID pid);
  Task<> observe(ProcessID pid);
  // Those that are missing.
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
