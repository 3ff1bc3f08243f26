#include "platforms/simulated/workspace.h"

#include <utility>

namespace pellow::simulated {

std::vector<RunningApplication> Workspace::runningApplications() {
  std::vector<RunningApplication> running;
  if (!system_.portCall("lists applications")) return running;
  for (const auto& each : system_.state.applications) running.push_back(each.identity);
  return running;
}

std::optional<RunningApplication> Workspace::application(ProcessID pid) {
  if (!system_.portCall("looks up application {}", pid)) return std::nullopt;
  const auto* found = system_.state.application(pid);
  return found ? std::optional(found->identity) : std::nullopt;
}

std::optional<ProcessID> Workspace::frontmostApplication() {
  if (!system_.portCall("asks for the frontmost application")) return std::nullopt;
  return system_.state.frontmost;
}

bool Workspace::hide(ProcessID pid) {
  if (!system_.portCall("hides application {}", pid)) return false;
  const auto* found = system_.state.application(pid);
  if (!found || found->refusesToHide) return false;
  system_.change([pid](DesktopState& desktop) { desktop.hide(pid); });
  return true;
}

bool Workspace::unhide(ProcessID pid) {
  if (!system_.portCall("unhides application {}", pid)) return false;
  if (!system_.state.application(pid)) return false;
  system_.change([pid](DesktopState& desktop) { desktop.unhide(pid); });
  return true;
}

bool Workspace::activate(ProcessID pid) {
  if (!system_.portCall("activates application {}", pid)) return false;
  if (!system_.state.application(pid)) return false;
  system_.change([pid](DesktopState& desktop) { desktop.activate(pid); });
  return true;
}

bool Workspace::open(std::string_view url) {
  if (!system_.portCall("opens {}", url) || system_.state.refusesURLs) return false;
  system_.state.openedURLs.emplace_back(url);
  return true;
}

Subscription Workspace::onDidActivateApplication(std::function<void(ProcessID)> observer) {
  return system_.applicationActivated.add(std::move(observer));
}

Subscription Workspace::onDidLaunchApplication(std::function<void(ProcessID)> observer) {
  return system_.applicationLaunched.add(std::move(observer));
}

Subscription Workspace::onDidTerminateApplication(std::function<void(ProcessID)> observer) {
  return system_.applicationTerminated.add(std::move(observer));
}

}  // namespace pellow::simulated
