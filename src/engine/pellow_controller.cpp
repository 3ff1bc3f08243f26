#include "engine/pellow_controller.h"

#include <algorithm>
#include <set>
#include <utility>

#include "access/ax.h"

namespace pellow {
namespace {

constexpr Seconds restoreBatchExtra = 1.5;
constexpr Seconds ownEcho = 0.5;
constexpr int putBacksAtMost = 3;

// The side that a zone's windows are slid to: its own, or the nearer one.
StripEdge parkingSide(const TabZone& zone) {
  if (zone.snap == StripEdge::left || zone.snap == StripEdge::right) return *zone.snap;
  return zone.position.x >= 0.5 ? StripEdge::right : StripEdge::left;
}

// Such a tab outlives its window: the application's other windows are hidden with it.
bool standsForApp(const TabItem& tab) { return tab.mechanism == Mechanism::hideApp; }

PellowError unanswered(Mechanism mechanism) {
  return mechanism == Mechanism::minimize ? PellowError::minimizeFailed(AXError::cannotComplete)
                                          : PellowError::moveFailed(AXError::cannotComplete);
}

}  // namespace

PellowController::PellowController(const Surroundings& surroundings)
    : around_(surroundings),
      store_(around_.notifications, around_.workspace),
      displays_(around_.screens),
      journal_(around_.userDefaults, around_.log),
      parking_(displays_, journal_, around_.accessibility, around_.workspace, around_.clock,
               around_.log, around_.ownProcess),
      parkedWindows_(journal_, store_, ledger_),
      echoes_(around_.clock),
      axQueue_(around_.queues),
      mechanisms_({.accessibility = around_.accessibility,
                   .axQueue = axQueue_,
                   .clock = around_.clock,
                   .displays = displays_,
                   .echoes = echoes_,
                   .log = around_.log,
                   .parking = parking_,
                   .parkedWindows = parkedWindows_,
                   .workspace = around_.workspace}),
      snapshots_({
          .accessibility = around_.accessibility,
          .axQueue = axQueue_,
          .clock = around_.clock,
          .log = around_.log,
          .mainQueue = around_.queues.main(),
          .preferences = around_.preferences,
          .screenCapture = around_.screenCapture,
      }),
      flights_(around_.panels, around_.preferences, around_.queues.main()),
      failures_(around_.alerts, around_.log, tasks_),
      triggers_({
          .accessibility = around_.accessibility,
          .axQueue = axQueue_,
          .displays = displays_,
          .echoes = echoes_,
          .ledger = ledger_,
          .log = around_.log,
          .preferences = around_.preferences,
          .store = store_,
          .tasks = tasks_,
      }),
      bulkActions_({.accessibility = around_.accessibility,
                    .axQueue = axQueue_,
                    .failures = failures_,
                    .tasks = tasks_,
                    .workspace = around_.workspace,
                    .zones = around_.zones,
                    .ownProcess = around_.ownProcess}),
      destroyedWindows_(axQueue_, tasks_, around_.accessibility),
      minimizeWatcher_(axQueue_, tasks_, around_.accessibility, around_.workspace,
                       around_.ownProcess),
      tasks_([this](std::exception_ptr failure) {
        try {
          std::rethrow_exception(failure);
        } catch (const PellowError& error) {
          failures_.report(error);
        } catch (const std::exception& error) {
          around_.log.error("An action ended: {}", error.what());
        }
      }) {
  setCallbacks();
}

PellowController::~PellowController() { around_.alerts.onAnswered = nullptr; }

void PellowController::setCallbacks() {
  snapshots_.onScreenRecordingDenied = [this] {
    failures_.report(PellowError::screenRecordingDenied());
  };
  triggers_.onPellow = [this](const TargetWindow& window) {
    tasks_.start(pellow(window, std::nullopt, std::nullopt));
  };
  triggers_.onMinimizedLate = [this](const TabItem& tab) { keepInDock(tab); };
  triggers_.onRestore = [this](UUID tab) { restore({tab}); };
  bulkActions_.pellowApps = [this](std::vector<AppWindows> applications,
                                   std::vector<TargetWindow> excluding) {
    return pellowApps(std::move(applications), std::move(excluding));
  };
  bulkActions_.minimizeInstead = [this](TargetWindow window) {
    return pellow(std::move(window), std::nullopt, Mechanism::minimize);
  };
  // An alert comes to the front, and gives way to what was there before: nobody has chosen that.
  around_.alerts.onAnswered = [this] {
    if (!echoes_.isActivationSuppressed()) echoes_.suppressActivation(ownEcho);
  };
  destroyedWindows_.onDestroyed = [this](UUID id) {
    const auto* const tab = store_.tab(id);
    if (tab && !standsForApp(*tab)) store_.remove(*tab);
  };
  minimizeWatcher_.onMinimized = [this](const TargetWindow& window) {
    triggers_.windowWasMinimized(window);
  };
  minimizeWatcher_.onFocused = [this](const TargetWindow& window) {
    if (!around_.alerts.isPresenting()) triggers_.windowWasFocused(window);
  };
}

void PellowController::start() {
  displays_.recordMainHeight();
  subscriptions_.push_back(
      around_.screens.onDidChangeParameters([this] { displays_.recordMainHeight(); }));
  // In a moment: while tabs come one after another, the next window must not wait for it.
  subscriptions_.push_back(around_.notifications.observe(TabStore::didChange, [this] {
    bookkeeping_ = around_.queues.main().async([this] { tabsDidChange(); });
  }));

  strip_ = std::make_unique<TabStripController>(
      TabStripController::Surroundings{.tabs = store_,
                                       .zones = around_.zones,
                                       .preferences = around_.preferences,
                                       .clock = around_.clock,
                                       .mainQueue = around_.queues.main(),
                                       .screens = around_.screens,
                                       .panels = around_.panels,
                                       .notifications = around_.notifications});
  strip_->onActivate = [this](const std::vector<UUID>& ids) { restore(ids); };
  strip_->start();

  subscriptions_.push_back(around_.workspace.onDidActivateApplication([this](ProcessID pid) {
    if (!around_.alerts.isPresenting()) triggers_.appActivated(pid);
    tasks_.start(snapshots_.cacheSnapshotOfFocusedWindow(pid));
  }));
  minimizeWatcher_.start();
}

// Pellowing

void PellowController::pellowFrontmost() { tasks_.start(pellowFocusedWindow()); }

Task<> PellowController::pellowFocusedWindow() {
  const auto window = co_await axQueue_.ax(
      [&] { return TargetWindow::frontmost(around_.accessibility, around_.workspace); });
  if (!window || window->pid == around_.ownProcess) throw PellowError::noFocusedWindow();
  if (ledger_.contains(*window, Ledger::Way::back)) {
    pellowWhenBack_.push_back(*window);
    co_return;
  }
  co_await pellowFocused(*window);
}

Task<> PellowController::pellowFocused(TargetWindow window) {
  if (around_.preferences.mechanism() != Mechanism::hideApp)
    co_return co_await pellow(window, std::nullopt, std::nullopt);
  const auto application = around_.workspace.application(window.pid);
  if (!application) throw PellowError::windowGone();
  co_await pellowApps({{*application, {window}, {}}}, {});
}

Task<> PellowController::pellow(TargetWindow target, std::optional<UUID> zoneID,
                                std::optional<Mechanism> mechanism) {
  if (isTaken(target)) co_return;
  const auto application = around_.workspace.application(target.pid);
  if (!application) co_return failures_.report(PellowError::windowGone());
  const auto zone = chooseZone(*application, zoneID);
  const auto chosen = mechanism.value_or(around_.preferences.mechanism());
  const Chosen window{*application, target, chosen, zone};
  if (chosen == Mechanism::hideApp) co_return co_await hideApp(window);
  co_await pellowWindows({window});
}

Task<> PellowController::pellowApps(std::vector<AppWindows> applications,
                                    std::vector<TargetWindow> excluding) {
  const auto preferred = around_.preferences.mechanism();
  std::vector<Chosen> chosen;
  for (const auto& [application, windows, zoneID] : applications) {
    const auto pid = application.pid;
    const auto zone = chooseZone(application, zoneID);
    // Hiding the application would take the windows with it that shall stay.
    const bool someStay = std::ranges::find(excluding, pid, &TargetWindow::pid) != excluding.end();
    const bool hides = preferred == Mechanism::hideApp;
    if (hides && !someStay) {
      // One window stands for all.
      const auto first =
          std::ranges::find_if_not(windows, [this](const auto& each) { return isTaken(each); });
      if (hasTabForApp(pid))
        hideAppAgain(pid);
      else if (first != windows.end())
        co_await hideApp({application, *first, preferred, zone});
      continue;
    }
    for (const auto& window : windows)
      if (std::ranges::find(excluding, window) == excluding.end())
        chosen.push_back({application, window, hides ? Mechanism::offscreen : preferred, zone});
  }
  co_await pellowWindows(std::move(chosen));
}

Task<> PellowController::pellowWindows(std::vector<Chosen> windows) {
  // A picture takes its time, in which the windows that have been looked at could move.
  const auto atOnce = snapshots_.isEnabled() ? 1 : BulkActions::windowsTogether;
  std::vector<PellowError> failures;
  for (auto next = windows.begin(); next != windows.end();) {
    std::vector<Chosen> together;
    for (; next != windows.end() && together.size() < atOnce; ++next)
      if (!isTaken(next->window)) together.push_back(*next);
    if (together.empty()) break;
    const auto failed = co_await park(std::move(together));
    failures.insert(failures.end(), failed.begin(), failed.end());
  }
  failures_.report(failures);
}

// Its tab stayed when somebody else brought it back.
void PellowController::hideAppAgain(ProcessID pid) {
  if (!around_.workspace.hide(pid)) failures_.report(PellowError::hideFailed());
  echoes_.settle(pid, EchoGuard::settleTime);
}

Task<> PellowController::hideApp(Chosen chosen) {
  if (isTaken(chosen.window)) co_return;
  auto claim = ledger_.claim(chosen.window, Ledger::Way::away);
  const auto state = (co_await read({chosen.window})).front();
  auto leaving = makeLeaving(chosen, state, std::move(claim));
  if (state.frame) co_await photograph(leaving);
  try {
    co_await putAway(leaving);
  } catch (const PellowError& error) {
    failures_.report(error);
  }
}

// What can be done for all of them at once comes first; then they go one after another. The
// failures are those of single windows.
Task<std::vector<PellowError>> PellowController::park(std::vector<Chosen> windows) {
  std::list<Ledger::Claim> claims;
  std::vector<TargetWindow> targets;
  for (const auto& chosen : windows) {
    claims.push_back(ledger_.claim(chosen.window, Ledger::Way::away));
    targets.push_back(chosen.window);
  }
  const auto states = co_await read(std::move(targets));

  std::vector<PellowError> failures;
  std::list<Leaving> leaving;
  for (std::size_t i = 0; i < windows.size(); ++i, claims.pop_front()) {
    if (!states[i].answers)
      failures.push_back(unanswered(windows[i].mechanism));
    else if (!states[i].frame)
      failures.push_back(PellowError::windowGone());
    else
      leaving.push_back(makeLeaving(windows[i], states[i], std::move(claims.front())));
  }
  std::vector<Mechanisms::Departure> departures;
  for (auto& each : leaving) {
    co_await photograph(each);
    departures.push_back(each.departure());
  }
  mechanisms_.prepare(departures);
  for (; !leaving.empty(); leaving.pop_front()) {
    try {
      co_await putAway(leaving.front());
    } catch (const PellowError& error) {
      failures.push_back(error);
    }
  }
  co_return failures;
}

Mechanisms::Departure PellowController::Leaving::departure() const {
  return {tab, parkingSide(zone)};
}

Task<> PellowController::photograph(Leaving& leaving) {
  auto& tab = leaving.tab;
  tab.snapshot = leaving.wasMinimized ? snapshots_.cachedSnapshot(tab.window.element)
                                      : co_await snapshots_.snapshotIfEnabled(
                                            tab.window.pid, tab.title, *tab.originalFrame);
}

// The window is minimized, and stays so until its tab brings it back.
void PellowController::keepInDock(TabItem tab) {
  tab.mechanism = Mechanism::minimize;
  publish(std::move(tab));
}

void PellowController::publish(TabItem tab) {
  triggers_.forgetLateMinimize(tab.window);
  echoes_.settle(tab.window.pid, EchoGuard::settleTime);
  store_.add(std::move(tab));
}

// From the claim on there is somebody who knows how to put the window back; the tab becomes public
// only when the window is hidden.
Task<> PellowController::putAway(Leaving& leaving) {
  const auto& tab = leaving.tab;
  // Those that went before it took their time, in which its user may have taken it out of the Dock.
  if (tab.mechanism == Mechanism::minimize && leaving.wasMinimized &&
      (co_await read({tab.window})).front().isMinimized)
    co_return keepInDock(tab);
  const auto tabFrame =
      shouldAnimate(tab.mechanism) ? strip_->projectedTabFrame(leaving.zone.id) : std::nullopt;
  leaving.claim.setTab(tab);
  const auto hiding = co_await mechanisms_.hide(leaving.departure());
  if (hiding.mayBeHidden) {
    publish(tab);
    if (tabFrame) flyOut(tab, *tabFrame);
  }
  if (!hiding.failure) co_return;
  // Away already, unless somebody has brought it back meanwhile.
  if (leaving.wasMinimized && !hiding.mayBeHidden &&
      (co_await read({tab.window})).front().isMinimized) {
    around_.log.error("{}", hiding.failure->errorDescription());
    co_return keepInDock(tab);
  }
  if (hiding.failure->code() == PellowError::Code::moveRefused) failures_.noteRefusal(tab.window);
  if (*hiding.failure == PellowError::minimizeFailed(AXError::cannotComplete))
    triggers_.expectLateMinimize(tab);
  throw PellowError(*hiding.failure);
}

// One that does not answer in time stands for those after it of the same application.
Task<std::vector<WindowState>> PellowController::read(std::vector<TargetWindow> windows) {
  co_return co_await axQueue_.ax([&] {
    std::vector<WindowState> states;
    std::optional<ProcessID> silent;
    for (const auto& window : windows) {
      states.push_back(window.pid == silent ? WindowState{.answers = false} : window.state());
      if (!states.back().answers) silent = window.pid;
    }
    return states;
  });
}

// Restoring

void PellowController::restoreAll() {
  std::vector<UUID> ids;
  for (const auto& tab : store_.tabs()) ids.push_back(tab.id);
  restore(ids);
}

void PellowController::restore(const std::vector<UUID>& ids) {
  std::list<Returning> returning;
  for (const auto& tab : store_.tabs()) {
    if (std::ranges::find(ids, tab.id) == ids.end()) continue;
    returning.push_back({tab, ledger_.claim(tab.window, Ledger::Way::back), std::nullopt});
    returning.back().claim.setTab(tab);
  }
  if (returning.empty()) return;
  const auto frames = strip_->frames(ids);
  for (auto& each : returning) {
    const auto frame = frames.find(each.tab.id);
    if (shouldAnimate(each.tab.mechanism) && frame != frames.end()) each.tabFrame = frame->second;
  }
  store_.remove(ids);
  tasks_.start(restoreBatch(std::move(returning)));
}

// While windows come back, their applications become active one after another; these activations
// must not bring back more.
Task<> PellowController::restoreBatch(std::list<Returning> returning) {
  const auto each = around_.preferences.animationDuration();
  echoes_.suppressActivation(each * static_cast<double>(returning.size()) + restoreBatchExtra);
  std::vector<PellowError> failures;
  while (!returning.empty()) {
    try {
      co_await restore(returning.front());
    } catch (const PellowError& error) {
      failures.push_back(error);
    }
    const auto window = returning.front().tab.window;
    returning.pop_front();
    if (std::erase(pellowWhenBack_, window) > 0) tasks_.start(pellowFocused(window));
  }
  echoes_.suppressActivation(ownEcho);
  failures_.report(failures);
  co_await pruneDead();
}

Task<> PellowController::restore(const Returning& returning) {
  const auto& tab = returning.tab;
  std::optional<PellowError> failure;
  try {
    // An application that is merely slow still has its window.
    if (!standsForApp(tab) &&
        co_await axQueue_.ax([&] { return tab.window.isGone().value_or(false); }))
      throw PellowError::windowGone();
    flyBack(returning);
    co_await mechanisms_.reveal(tab);
  } catch (const PellowError& error) {
    failure = error;
  }
  if (!failure) co_return;

  if (failure->isWindowGone()) {
    around_.log.standard("Dropping tab whose window no longer exists");
    parkedWindows_.forget(tab);
    co_return;
  }
  store_.add(tab);
  throw PellowError(*failure);
}

// Tabs whose windows are gone and whose end was not announced go with the next batch. Not before
// it: an application that hangs makes this wait.
Task<> PellowController::pruneDead() {
  const auto tabs = store_.tabs();
  const auto dead = co_await axQueue_.ax([&] {
    std::vector<UUID> ids;
    std::set<ProcessID> silent;
    for (const auto& tab : tabs) {
      if (standsForApp(tab) || silent.contains(tab.window.pid)) continue;
      const auto isGone = tab.window.isGone();
      if (!isGone) silent.insert(tab.window.pid);
      if (isGone.value_or(false)) ids.push_back(tab.id);
    }
    return ids;
  });
  store_.pruneDead(dead);
}

void PellowController::restoreAllBlocking() {
  // Not started: the journal is still that of a previous run.
  if (!strip_) return;
  auto away = triggers_.lateMinimizes();
  for (const auto& entry : ledger_.entries())
    if (entry.tab) away.push_back(*entry.tab);
  away.insert(away.end(), store_.tabs().begin(), store_.tabs().end());
  tasks_.cancel();
  bulkActions_.dropWaiting();

  // What blocks here hears of no change of the displays, and windows may answer slowly.
  std::vector<TabItem> unanswered;
  for (int attempt = 0; attempt < putBacksAtMost; ++attempt) {
    const auto screens = around_.screens.all();
    displays_.recordMainHeight();
    unanswered.clear();
    for (const auto& tab : away)
      if (mechanisms_.revealBlocking(tab) == std::unexpected(AXError::cannotComplete))
        unanswered.push_back(tab);
    if (around_.screens.all() == screens) break;
  }
  for (const auto& tab : unanswered) parkedWindows_.keepForNextLaunch(tab);

  std::vector<UUID> ids;
  for (const auto& tab : store_.tabs()) ids.push_back(tab.id);
  store_.remove(ids);
  journal_.write({});
}

// Bookkeeping

bool PellowController::isTaken(const TargetWindow& window) const {
  return store_.contains(window) || ledger_.contains(window);
}

bool PellowController::hasTabForApp(ProcessID pid) const {
  return std::ranges::any_of(store_.tabs(), [pid](const TabItem& tab) {
    return standsForApp(tab) && tab.window.pid == pid;
  });
}

TabZone PellowController::chooseZone(const RunningApplication& application,
                                     std::optional<UUID> zoneID) const {
  if (zoneID) return around_.zones.zone(zoneID);
  if (!application.bundleID) return around_.zones.defaultZone();
  const auto pinned = around_.zones.pinnedZone(*application.bundleID);
  return pinned.value_or(around_.zones.defaultZone());
}

PellowController::Leaving PellowController::makeLeaving(const Chosen& chosen,
                                                        const WindowState& state,
                                                        Ledger::Claim claim) {
  const auto& [application, window, mechanism, zone] = chosen;
  TabItem tab{.id = around_.uuids.next(),
              .window = window,
              .appName = application.localizedName,
              .bundleID = application.bundleID,
              .title = state.title,
              .icon = application.icon,
              .mechanism = mechanism,
              .screenID = state.frame ? displays_.screenID(*state.frame) : std::nullopt,
              .originalFrame = state.frame,
              .zoneID = zone.id};
  return {std::move(claim), std::move(tab), zone, state.isMinimized};
}

void PellowController::tabsDidChange() {
  destroyedWindows_.watch(store_.tabs());
  parkedWindows_.dropStaleRecords();
}

// Flights

bool PellowController::shouldAnimate(Mechanism mechanism) const {
  return mechanism != Mechanism::minimize && around_.preferences.value(preference::animateFlight);
}

void PellowController::flyOut(const TabItem& tab, const AppKitRect& tabFrame) {
  if (!tab.originalFrame) return;
  const auto& image = tab.snapshot ? tab.snapshot : tab.icon;
  if (!image) return;
  flights_.flyOut(*image,
                  tab.snapshot ? FlightAnimator::Subject::picture : FlightAnimator::Subject::icon,
                  displays_.flip().toAppKit(*tab.originalFrame), tabFrame);
}

void PellowController::flyBack(const Returning& returning) {
  const auto& tab = returning.tab;
  const auto& image = tab.snapshot ? tab.snapshot : tab.icon;
  if (!returning.tabFrame || !image || !tab.originalFrame) return;
  const QuartzRect home{tab.mechanism == Mechanism::offscreen
                            ? parking_.restoreOrigin(*tab.originalFrame)
                            : tab.originalFrame->origin,
                        tab.originalFrame->size};
  flights_.flyBack(*image,
                   tab.snapshot ? FlightAnimator::Subject::picture : FlightAnimator::Subject::icon,
                   *returning.tabFrame, displays_.flip().toAppKit(home));
}

}  // namespace pellow
