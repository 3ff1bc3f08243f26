#include "platforms/simulated/workspace.h"

#include <algorithm>
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
  auto* found = system_.state.application(pid);
  if (!found || found->refusesToHide) return false;
  found->isAskedToHide = true;
  if (found->hidesAfter == 0)
    hideAsAsked(pid);
  else if (found->hidesAfter != never)
    system_.scheduler.happenAt(system_.scheduler.now() + found->hidesAfter,
                               [this, pid] { hideAsAsked(pid); });
  return true;
}

void Workspace::hideAsAsked(ProcessID pid) {
  const auto* found = system_.state.application(pid);
  if (!found || !found->isAskedToHide) return;
  system_.change([pid](DesktopState& desktop) { desktop.hide(pid); });
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
  if (system_.state.ignoresActivations) return true;
  system_.change([pid](DesktopState& desktop) { desktop.activate(pid); });
  return true;
}

void Workspace::activateDesktop() {
  if (!system_.portCall("activates the desktop")) return;
  system_.change([](DesktopState& desktop) { desktop.frontmost = std::nullopt; });
}

std::vector<WindowOnScreen> Workspace::windowsOnScreen() {
  std::vector<WindowOnScreen> windows;
  if (!system_.portCall("lists the windows on the screen")) return windows;
  for (const auto& each : system_.state.windows)
    if (system_.state.isVisible(each)) windows.push_back({each.pid, each.frame});
  return windows;
}

bool Workspace::hasWindowsOnOtherSpaces(ProcessID pid) {
  if (!system_.portCall("asks for windows of {} on other Spaces", pid)) return false;
  return std::ranges::any_of(system_.state.windows, [&](const WindowState& each) {
    return each.pid == pid && system_.state.isOnOtherSpace(each);
  });
}

bool Workspace::open(std::string_view url) {
  if (!system_.portCall("opens {}", url) || system_.state.refusesURLs) return false;
  system_.state.openedURLs.emplace_back(url);
  return true;
}

Subscription Workspace::onDidActivateApplication(std::function<void(ProcessID)> observer) {
  return system_.applicationActivated.add(std::move(observer));
}

Subscription Workspace::onDidBecomeRegular(std::function<void(ProcessID)> observer) {
  return system_.applicationBecameRegular.add(std::move(observer));
}

Subscription Workspace::onDidTerminateApplication(std::function<void(ProcessID)> observer) {
  return system_.applicationTerminated.add(std::move(observer));
}

Subscription Workspace::onDidChangeActiveSpace(std::function<void()> observer) {
  return system_.activeSpaceChanged.add(std::move(observer));
}

}  // namespace pellow::simulated
