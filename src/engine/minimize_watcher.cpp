#include "engine/minimize_watcher.h"

#include <algorithm>
#include <utility>

#include "access/ax.h"

namespace pellow {
namespace {

void report(const AXElement& element, const std::function<void(TargetWindow)>& callback) {
  const auto pid = element.pid();
  if (pid && callback) callback({element, *pid});
}

bool isComplete(const std::array<Subscription, 2>& observers) {
  return std::ranges::all_of(observers, [](const Subscription& observer) { return !!observer; });
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
  const auto watchIt = [this](ProcessID pid) { watch(pid); };
  workspaceTokens_.push_back(workspace_.onDidBecomeRegular(watchIt));
  workspaceTokens_.push_back(workspace_.onDidActivateApplication(watchIt));
  workspaceTokens_.push_back(
      workspace_.onDidTerminateApplication([this](ProcessID pid) { unwatch(pid); }));
  for (const auto& application : workspace_.runningApplications()) watch(application);
}

void MinimizeWatcher::stop() {
  watched_.clear();
  workspaceTokens_.clear();
}

void MinimizeWatcher::watch(ProcessID pid) {
  const auto known = watched_.find(pid);
  if (known != watched_.end() && isComplete(known->second.observers)) return;
  if (const auto application = workspace_.application(pid)) watch(*application);
}

void MinimizeWatcher::watch(const RunningApplication& application) {
  if (application.activationPolicy != ActivationPolicy::regular) return;
  if (application.pid == ownProcess_) return;
  auto& watched = watched_[application.pid];
  if (isComplete(watched.observers) || std::exchange(watched.isAsked, true)) return;
  tasks_.start(observe(application.pid));
}

void MinimizeWatcher::unwatch(ProcessID pid) { watched_.erase(pid); }

Task<> MinimizeWatcher::observe(ProcessID pid) {
  auto observers = std::move(watched_.at(pid).observers);
  co_await axQueue_.ax([&] { add(observers, pid); });
  const auto watched = watched_.find(pid);
  if (watched != watched_.end()) watched->second = {.observers = std::move(observers)};
}

void MinimizeWatcher::add(Observers& observers, ProcessID pid) {
  const auto application = accessibility_.application(pid);
  const auto observe = [&](Subscription& observer, std::string_view notification,
                           const std::function<void(TargetWindow)>& callback) {
    if (observer) return;
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
