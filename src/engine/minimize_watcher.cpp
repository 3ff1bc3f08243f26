#include "engine/minimize_watcher.h"

#include <utility>

#include "access/ax.h"

namespace pellow {

MinimizeWatcher::MinimizeWatcher(Accessibility& accessibility, Workspace& workspace,
                                 ProcessID ownProcess)
    : accessibility_(accessibility), workspace_(workspace), ownProcess_(ownProcess) {}

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
  observers_.clear();
  workspaceTokens_.clear();
}

void MinimizeWatcher::watch(const RunningApplication& application) {
  if (application.activationPolicy != ActivationPolicy::regular) return;
  if (application.pid == ownProcess_ || observers_.contains(application.pid)) return;
  const auto element = accessibility_.application(application.pid);
  std::vector<Subscription> observer;
  observe(observer, element, AX::notification::windowMiniaturized, onMinimized);
  observe(observer, element, AX::notification::focusedWindowChanged, onFocused);
  if (!observer.empty()) observers_.emplace(application.pid, std::move(observer));
}

void MinimizeWatcher::unwatch(ProcessID pid) { observers_.erase(pid); }

void MinimizeWatcher::observe(std::vector<Subscription>& observer, const AXElement& application,
                              std::string_view notification,
                              std::function<void(TargetWindow)>& callback) {
  auto token = accessibility_.observe(
      application, notification,
      [&callback](const AXElement& element) { report(element, callback); },
      AX::timeout::application);
  if (token) observer.push_back(std::move(*token));
}

void MinimizeWatcher::report(const AXElement& element,
                             const std::function<void(TargetWindow)>& callback) {
  const auto pid = element.pid();
  if (pid && callback) callback({element, *pid});
}

}  // namespace pellow
