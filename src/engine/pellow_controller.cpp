#include "engine/pellow_controller.h"

#include <exception>
#include <utility>

namespace pellow {

PellowController::PellowController(const Surroundings& surroundings)
    : around_(surroundings),
      places_(around_.displays),
      journal_(around_.userDefaults, around_.log),
      parkedWindows_(journal_, around_.tabs, ledger_),
      echoes_(around_.clock),
      axQueue_(around_.queues, "com.velloway.pellow.actions"),
      failures_(
          {.alerts = around_.alerts, .log = around_.log, .tasks = tasks_, .texts = around_.texts}),
      flights_({.animator = around_.animator,
                .displays = around_.displays,
                .places = places_,
                .preferences = around_.preferences,
                .strips = around_.strips}),
      mechanisms_({.accessibility = around_.accessibility,
                   .axQueue = axQueue_,
                   .clock = around_.clock,
                   .displays = around_.displays,
                   .echoes = echoes_,
                   .log = around_.log,
                   .parkedWindows = parkedWindows_,
                   .places = places_,
                   .texts = around_.texts,
                   .workspace = around_.workspace}),
      focus_({.accessibility = around_.accessibility,
              .axQueue = axQueue_,
              .clock = around_.clock,
              .displays = around_.displays,
              .echoes = echoes_,
              .ledger = ledger_,
              .mechanisms = mechanisms_,
              .tabs = around_.tabs,
              .workspace = around_.workspace,
              .ownProcess = around_.ownProcess}),
      snapshots_({.accessibility = around_.accessibility,
                  .axQueue = axQueue_,
                  .clock = around_.clock,
                  .log = around_.log,
                  .mainQueue = around_.queues.main(),
                  .preferences = around_.preferences,
                  .screenCapture = around_.screenCapture,
                  .texts = around_.texts}),
      upkeep_({.accessibility = around_.accessibility,
               .axQueue = axQueue_,
               .mainQueue = around_.queues.main(),
               .notifications = around_.notifications,
               .parkedWindows = parkedWindows_,
               .tabs = around_.tabs,
               .tasks = tasks_}),
      parkingUpkeep_({.axQueue = axQueue_,
                      .clock = around_.clock,
                      .displays = around_.displays,
                      .log = around_.log,
                      .mainQueue = around_.queues.main(),
                      .parkedWindows = parkedWindows_,
                      .places = places_,
                      .screens = around_.screens,
                      .tabs = around_.tabs,
                      .tasks = tasks_,
                      .workspace = around_.workspace,
                      .zones = around_.zones}),
      departures_({.accessibility = around_.accessibility,
                   .axQueue = axQueue_,
                   .displays = around_.displays,
                   .echoes = echoes_,
                   .failures = failures_,
                   .flights = flights_,
                   .focus = focus_,
                   .lateMinimizes = lateMinimizes_,
                   .ledger = ledger_,
                   .log = around_.log,
                   .mechanisms = mechanisms_,
                   .preferences = around_.preferences,
                   .snapshots = snapshots_,
                   .tabs = around_.tabs,
                   .tasks = tasks_,
                   .texts = around_.texts,
                   .uuids = around_.uuids,
                   .workspace = around_.workspace,
                   .zones = around_.zones,
                   .ownProcess = around_.ownProcess}),
      returns_({.axQueue = axQueue_,
                .clock = around_.clock,
                .displays = around_.displays,
                .echoes = echoes_,
                .failures = failures_,
                .flights = flights_,
                .journal = journal_,
                .lateMinimizes = lateMinimizes_,
                .ledger = ledger_,
                .log = around_.log,
                .mechanisms = mechanisms_,
                .parkedWindows = parkedWindows_,
                .parkingUpkeep = parkingUpkeep_,
                .preferences = around_.preferences,
                .screens = around_.screens,
                .tabs = around_.tabs,
                .tasks = tasks_,
                .upkeep = upkeep_}),
      strandedWindows_({.accessibility = around_.accessibility,
                        .axQueue = axQueue_,
                        .clock = around_.clock,
                        .displays = around_.displays,
                        .journal = journal_,
                        .ledger = ledger_,
                        .log = around_.log,
                        .mainQueue = around_.queues.main(),
                        .places = places_,
                        .screens = around_.screens,
                        .tabs = around_.tabs,
                        .tasks = tasks_,
                        .workspace = around_.workspace,
                        .ownProcess = around_.ownProcess}),
      bulkActions_({.accessibility = around_.accessibility,
                    .axQueue = axQueue_,
                    .departures = departures_,
                    .failures = failures_,
                    .tasks = tasks_,
                    .workspace = around_.workspace,
                    .zones = around_.zones,
                    .ownProcess = around_.ownProcess}),
      triggers_({.accessibility = around_.accessibility,
                 .axQueue = axQueue_,
                 .departures = departures_,
                 .displays = around_.displays,
                 .echoes = echoes_,
                 .lateMinimizes = lateMinimizes_,
                 .ledger = ledger_,
                 .log = around_.log,
                 .preferences = around_.preferences,
                 .returns = returns_,
                 .store = around_.tabs,
                 .tasks = tasks_,
                 .workspace = around_.workspace,
                 .ownProcess = around_.ownProcess}),
      tasks_([this](std::exception_ptr failure) { actionEnded(std::move(failure)); }) {
  setCallbacks();
}

PellowController::~PellowController() { around_.alerts.onClosed = nullptr; }

void PellowController::setCallbacks() {
  snapshots_.onScreenRecordingDenied = [this] {
    failures_.report(PellowError::screenRecordingDenied(around_.texts));
  };
  parkingUpkeep_.onStaysInSight = [this](UUID tab) { returns_.restore({tab}); };
  returns_.onArrived = [this] { departures_.aWindowIsBack(); };
  // When an alert closes, the application behind it becomes active: not the user's choice.
  around_.alerts.onClosed = [this] { echoes_.suppressActivationAtLeast(EchoGuard::ownEcho); };
}

void PellowController::start() {
  isStarted_ = true;
  activations_ = around_.workspace.onDidActivateApplication([this](ProcessID pid) {
    if (pid == around_.ownProcess) return;
    triggers_.appActivated(pid);
    tasks_.start(snapshots_.cacheSnapshotOfFocusedWindow(pid));
  });
  upkeep_.start();
  parkingUpkeep_.start();
  triggers_.start();
  strandedWindows_.start();
}

// Before `start` the journal is still that of a previous run.
bool PellowController::canAct() {
  if (!isStarted_) failures_.report(PellowError::accessibilityDenied());
  return isStarted_;
}

void PellowController::actionEnded(std::exception_ptr failure) {
  try {
    std::rethrow_exception(std::move(failure));
  } catch (const PellowError& error) {
    failures_.report(error);
  } catch (const std::exception& error) {
    around_.log.error("An action ended: {}", error.what());
  }
}

void PellowController::pellowFrontmost() {
  if (canAct()) tasks_.start(departures_.pellowFocused(around_.workspace.frontmostApplication()));
}

void PellowController::pellow(TargetWindow window, std::optional<UUID> zoneID,
                              std::optional<Mechanism> mechanism) {
  if (canAct()) tasks_.start(departures_.pellow(std::move(window), zoneID, mechanism));
}

void PellowController::pellowApp(TargetWindow of, std::optional<UUID> zoneID,
                                 std::vector<TargetWindow> excluding) {
  if (canAct()) tasks_.start(departures_.pellowApp(std::move(of), zoneID, std::move(excluding)));
}

void PellowController::pellowPinnedApps() {
  if (canAct()) bulkActions_.pellowPinnedApps();
}

void PellowController::pellowEverything() {
  if (canAct()) bulkActions_.pellowEverything();
}

void PellowController::enterFocusMode() {
  if (canAct()) bulkActions_.enterFocusMode();
}

void PellowController::restoreAll() {
  std::vector<UUID> ids;
  for (const auto& tab : around_.tabs.tabs()) ids.push_back(tab.id);
  returns_.restore(ids);
}

void PellowController::restoreAllBlocking() {
  if (!isStarted_) return;
  bulkActions_.dropWaiting();
  returns_.restoreAllBlocking();
}

// The watchers may have waited for an answer when all tasks ended.
void PellowController::restoreAllAndGoOn() {
  if (!isStarted_) return;
  bulkActions_.dropWaiting();
  returns_.restoreAllAndGoOn();
  departures_.tasksHaveEnded();
  triggers_.start();
}

void PellowController::cacheSnapshot(TargetWindow window) {
  if (isStarted_) tasks_.start(snapshots_.cacheSnapshot(std::move(window)));
}

}  // namespace pellow
