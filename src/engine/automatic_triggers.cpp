#include "engine/automatic_triggers.h"

#include <algorithm>
#include <ranges>
#include <utility>

#include "access/ax.h"

namespace pellow {
namespace {

// The frames of an application's windows that are not minimized.
std::vector<QuartzRect> framesOnScreen(Accessibility& accessibility, ProcessID pid,
                                       const std::vector<TargetWindow>& leftOut) {
  std::vector<QuartzRect> frames;
  for (const auto& window : TargetWindow::windows(accessibility, pid)) {
    if (std::ranges::find(leftOut, window) != leftOut.end()) continue;
    if (AX::boolean(window.element, AX::attribute::minimized, AX::timeout::windowChange)
            .value_or(false))
      continue;
    if (const auto frame = AX::frame(window.element, AX::timeout::windowChange))
      frames.push_back(*frame);
  }
  return frames;
}

}  // namespace

AutomaticTriggers::AutomaticTriggers(const Surroundings& surroundings)
    : around_(surroundings),
      minimizeWatcher_(around_.axQueue, around_.tasks, around_.accessibility, around_.workspace,
                       around_.ownProcess) {
  minimizeWatcher_.onMinimized = [this](const TargetWindow& window) { windowWasMinimized(window); };
  minimizeWatcher_.onFocused = [this](const TargetWindow& window) { windowWasFocused(window); };
}

void AutomaticTriggers::start() {
  minimizeWatcher_.start();
  around_.tasks.start(tellOfWatching());
}

// By then all applications have been asked for their observers: the queue keeps the order.
Task<> AutomaticTriggers::tellOfWatching() {
  co_await around_.axQueue.ax([] {});
  around_.log.info("Watching other applications");
}

void AutomaticTriggers::windowWasMinimized(const TargetWindow& window) {
  if (around_.store.contains(window) || around_.ledger.contains(window)) return;
  if (const auto tab = around_.lateMinimizes.take(window))
    return around_.departures.keepInDock(*tab);
  if (!around_.preferences.value(preference::pellowOnMinimize)) return;
  if (around_.echoes.isMinimizeSuppressed()) return;
  around_.echoes.settle(window.pid, EchoGuard::settleTime);
  around_.log.standard("Window minimized elsewhere; pellowing it");
  around_.tasks.start(around_.departures.pellow(window, std::nullopt, std::nullopt));
}

bool AutomaticTriggers::ignoresActivation(ProcessID pid) const {
  return !around_.preferences.value(preference::restoreOnActivation) ||
         around_.echoes.isActivationSuppressed() || around_.echoes.isSettling(pid);
}

void AutomaticTriggers::windowWasFocused(const TargetWindow& window) {
  around_.lateMinimizes.forget(window);
  if (ignoresActivation(window.pid)) return;
  const auto& tabs = around_.store.tabs();
  const auto tab = std::ranges::find(tabs, window, &TabItem::window);
  if (tab != tabs.end()) around_.tasks.start(reactToFocus(window.pid, tab->id));
}

Task<> AutomaticTriggers::reactToFocus(ProcessID pid, UUID tab) {
  if (!co_await hasVisibleWindow(pid) || ignoresActivation(pid)) co_return;
  around_.log.standard("Pellowed window was chosen from its app; restoring it");
  around_.returns.restore({tab});
}

void AutomaticTriggers::appActivated(ProcessID pid) {
  if (ignoresActivation(pid)) return;
  const auto isOfApplication = [pid](const TabItem& tab) { return tab.window.pid == pid; };
  if (std::ranges::any_of(around_.store.tabs(), isOfApplication))
    around_.tasks.start(reactToActivation(pid));
}

Task<> AutomaticTriggers::reactToActivation(ProcessID pid) {
  // Much may have happened before the application answered.
  if (co_await hasVisibleWindow(pid) || ignoresActivation(pid)) co_return;
  const auto& tabs = around_.store.tabs();
  for (const auto& tab : std::views::reverse(tabs)) {
    if (tab.window.pid != pid) continue;
    around_.log.standard("Activated app has nothing visible; restoring its most recent tab");
    around_.returns.restore({tab.id});
    break;
  }
}

// Whether the application shows a window that has no tab.
Task<bool> AutomaticTriggers::hasVisibleWindow(ProcessID pid) {
  std::vector<TargetWindow> pellowed;
  for (const auto& tab : around_.store.tabs()) pellowed.push_back(tab.window);
  const auto frames = co_await around_.axQueue.ax(
      [&] { return framesOnScreen(around_.accessibility, pid, pellowed); });
  co_return std::ranges::any_of(
      frames, [this](const QuartzRect& frame) { return !around_.displays.isHidden(frame); });
}

}  // namespace pellow
