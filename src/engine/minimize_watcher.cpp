#include "engine/minimize_watcher.h"

#include <utility>

#include "access/ax.h"

namespace pellow {
namespace {

void report(const AXElement& element, const std::function<void(TargetWindow)>& callback) {
  const auto pid = element.pid();
  if (pid && callback) callback({element, *pid});
}

}  // namespace

MinimizeWatcher::MinimizeWatcher(AXQueue& axQueue, TaskScope& tasks, Accessibility& accessibility,
                                 Workspace& workspace, ProcessID ownProcess)
    : axQueue_(axQueue),
      tasks_(tasks),
      accessibility_(accessibility),
      workspace_(workspace),
      ownProcess_(ownProcess) {}

void MinimizeWatcher::start() {
  stop();
  workspaceTokens_.push_back(workspace_.onDidLaunchApplication([this](ProcessID pid) {
    if (const auto application = workspace_.application(pid)) watch(*application);
  }));
  workspaceTokens_.push_back(
      workspace_.onDidTerminateApplication([this](ProcessID pid) { unwatch(pid); }));
  for (const auto& application : workspace_.runningApplications()) watch(application);
}

void MinimizeWatcher::stop() {
  watched_.clear();
  workspaceTokens_.clear();
}

void MinimizeWatcher::watch(const RunningApplication& application) {
  if (application.activationPolicy != ActivationPolicy::regular) return;
  if (application.pid == ownProcess_ || watched_.contains(application.pid)) return;
  watched_.try_emplace(application.pid);
  tasks_.start(observe(application.pid));
}

void MinimizeWatcher::unwatch(ProcessID pid) { watched_.erase(pid); }

Task<> MinimizeWatcher::observe(ProcessID pid) {
  Observers observers;
  co_await axQueue_.ax([&] { add(observers, pid); });
  const auto watched = watched_.find(pid);
  if (watched != watched_.end()) watched->second = std::move(observers);
}

void MinimizeWatcher::add(Observers& observers, ProcessID pid) {
  const auto application = accessibility_.application(pid);
  const auto observe = [&](Subscription& observer, std::string_view notification,
                           const std::function<void(TargetWindow)>& callback) {
    auto added = accessibility_.observe(
        application, notification,
        [&callback](const AXElement& element) { report(element, callback); },
        AX::timeout::application);
    if (added) observer = std::move(*added);
  };
  observe(observers[0], AX::notification::windowMiniaturized, onMinimized);
  observe(observers[1], AX::notification::focusedWindowChanged, onFocused);
}

}  // namespace pellow
