#pragma once

#include <functional>
#include <map>
#include <vector>

#include "access/target_window.h"
#include "base/subscription.h"
#include "platform/accessibility.h"
#include "platform/workspace.h"

namespace pellow {

// Hears when a window of another application is minimized, by whatever means, and when an
// application's focus goes to another window. Follows applications as they come and go; one that
// refuses an observer is not watched. Main thread.
class MinimizeWatcher {
 public:
  MinimizeWatcher(Accessibility& accessibility, Workspace& workspace, ProcessID ownProcess);

  std::function<void(TargetWindow)> onMinimized;
  std::function<void(TargetWindow)> onFocused;

  void start();
  void stop();

  // Ordinary applications only, never this process; once.
  void watch(const RunningApplication& application);
  void unwatch(ProcessID pid);

 private:
  void observe(std::vector<Subscription>& observer, const AXElement& application,
               std::string_view notification, std::function<void(TargetWindow)>& callback);
  static void report(const AXElement& element, const std::function<void(TargetWindow)>& callback);

  Accessibility& accessibility_;
  Workspace& workspace_;
  const ProcessID ownProcess_;
  std::map<ProcessID, std::vector<Subscription>> observers_;
  std::vector<Subscription> workspaceTokens_;
};

}  // namespace pellow
