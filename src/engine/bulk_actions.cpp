#include "engine/bulk_actions.h"

#include <cstddef>
#include <utility>

#include "base/scoped_flag.h"

namespace pellow {

void BulkActions::pellowPinnedApps() {
  if (around_.zones.pins.empty()) return around_.failures.report(PellowError::nothingPinned());
  enqueue({Applications::pinned, {}});
}

void BulkActions::pellowEverything() { enqueue({Applications::all, {}}); }

void BulkActions::enterFocusMode() {
  around_.tasks.start(focusMode(around_.workspace.frontmostApplication()));
}

Task<> BulkActions::focusMode(std::optional<ProcessID> frontmostApplication) {
  if (frontmostApplication == around_.ownProcess) frontmostApplication.reset();
  const auto focused = co_await around_.axQueue.ax(
      [&] { return TargetWindow::frontmost(around_.accessibility, frontmostApplication); });
  if (!focused) throw PellowError::noFocusedWindow();
  enqueue({Applications::all, {*focused}});
}

void BulkActions::enqueue(Command command) {
  waiting_.push_back(std::move(command));
  if (!isRunning_) around_.tasks.start(runWaiting());
}

Task<> BulkActions::runWaiting() {
  const ScopedFlag running(isRunning_);
  while (!waiting_.empty()) {
    auto command = std::move(waiting_.front());
    waiting_.pop_front();
    auto failed = co_await run(std::move(command));
    if (failed.refusedOffscreen.empty())
      around_.failures.show(failed.failures);
    else
      around_.tasks.start(offerToMinimize(std::move(failed)));
  }
}

Task<BulkActions::Failed> BulkActions::run(Command command) {
  FailureReports::Collection collection(around_.failures);
  co_await pellowAll(std::move(command));
  co_return Failed{std::move(collection.failures), std::move(collection.refusedOffscreen)};
}

Task<> BulkActions::pellowAll(Command command) {
  std::vector<AppWindows> together;
  std::size_t gathered = 0;
  for (const auto& application : applications(command.applications)) {
    auto windows = co_await around_.axQueue.ax(
        [&] { return TargetWindow::windows(around_.accessibility, application.pid); });
    if (windows.empty()) continue;
    gathered += windows.size();
    together.push_back({application, std::move(windows), std::nullopt});
    if (gathered < Departures::windowsTogether) continue;
    co_await around_.departures.pellowApps(std::exchange(together, {}), command.excluding);
    gathered = 0;
  }
  co_await around_.departures.pellowApps(std::move(together), command.excluding);
}

std::vector<RunningApplication> BulkActions::applications(Applications which) const {
  auto applications = around_.workspace.runningApplications();
  std::erase_if(applications, [&](const RunningApplication& each) {
    const bool isOrdinary =
        each.activationPolicy == ActivationPolicy::regular && each.pid != around_.ownProcess;
    const bool isPinned = each.bundleID && around_.zones.pins.contains(*each.bundleID);
    return !isOrdinary || (which == Applications::pinned && !isPinned);
  });
  return applications;
}

Task<> BulkActions::offerToMinimize(Failed failed) {
  const auto& [failures, refused] = failed;
  if (!co_await around_.failures.offerToMinimize(refused, failures)) co_return;
  for (const auto& window : refused)
    co_await around_.departures.pellow(window, std::nullopt, Mechanism::minimize);
}

}  // namespace pellow
