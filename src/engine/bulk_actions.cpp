#include "engine/bulk_actions.h"

#include <utility>

namespace pellow {

void BulkActions::pellowPinnedApps() {
  if (around_.zones.pins.empty()) return around_.failures.report(PellowError::nothingPinned());
  start(&BulkActions::pinnedApps);
}

void BulkActions::pellowEverything() { start(&BulkActions::everything); }

void BulkActions::enterFocusMode() { start(&BulkActions::everythingElse); }

void BulkActions::start(Action action) {
  waiting_.push_back(action);
  if (!isRunning_) around_.tasks.start(runWaiting());
}

void BulkActions::dropWaiting() {
  waiting_.clear();
  if (std::exchange(isRunning_, false)) (void)around_.failures.endBulk();
}

Task<> BulkActions::runWaiting() {
  isRunning_ = true;
  while (!waiting_.empty()) {
    const auto action = waiting_.front();
    waiting_.pop_front();
    co_await (this->*action)();
  }
  isRunning_ = false;
}

Task<> BulkActions::pinnedApps() { co_await pellowAll(/*onlyPinned=*/true, {}); }

Task<> BulkActions::everything() { co_await pellowAll(/*onlyPinned=*/false, {}); }

Task<> BulkActions::everythingElse() {
  const auto focused = co_await around_.axQueue.ax(
      [&] { return TargetWindow::frontmost(around_.accessibility, around_.workspace); });
  if (!focused) {
    around_.failures.report(PellowError::noFocusedWindow());
    co_return;
  }
  co_await pellowAll(/*onlyPinned=*/false, {*focused});
}

Task<> BulkActions::pellowAll(bool onlyPinned, std::vector<TargetWindow> excluding) {
  around_.failures.beginBulk();
  std::vector<AppWindows> together;
  std::size_t gathered = 0;
  for (const auto& application : around_.workspace.runningApplications()) {
    if (application.activationPolicy != ActivationPolicy::regular) continue;
    if (application.pid == around_.ownProcess) continue;
    std::optional<UUID> pin;
    if (application.bundleID)
      if (const auto zone = around_.zones.pinnedZone(*application.bundleID)) pin = zone->id;
    if (onlyPinned && !pin) continue;
    auto windows = co_await around_.axQueue.ax(
        [&] { return TargetWindow::windows(around_.accessibility, application.pid); });
    if (windows.empty()) continue;
    gathered += windows.size();
    together.push_back({application, std::move(windows), pin});
    if (gathered < windowsTogether) continue;
    co_await pellowApps(std::exchange(together, {}), excluding);
    gathered = 0;
  }
  if (!together.empty()) co_await pellowApps(together, excluding);
  auto bulk = around_.failures.endBulk();
  if (bulk.failures.empty()) co_return;
  if (bulk.refusedOffscreen.empty()) co_return around_.failures.report(bulk.failures);
  around_.tasks.start(offerToMinimize(std::move(bulk)));
}

Task<> BulkActions::offerToMinimize(FailureReports::Bulk bulk) {
  if (!co_await around_.failures.offerToMinimize(bulk.refusedOffscreen, bulk.failures)) co_return;
  for (const auto& window : bulk.refusedOffscreen) co_await minimizeInstead(window);
}

}  // namespace pellow
