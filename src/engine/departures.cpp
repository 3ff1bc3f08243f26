#include "engine/departures.h"

#include <algorithm>
#include <utility>

#include "access/ax.h"

namespace pellow {
namespace {

PellowError unanswered(Mechanism mechanism) {
  return mechanism == Mechanism::minimize ? PellowError::minimizeFailed(AXError::cannotComplete)
                                          : PellowError::moveFailed(AXError::cannotComplete);
}

// Why a window cannot leave, if so; hiding its application needs no answer from it.
std::optional<PellowError> obstacle(Mechanism mechanism, const WindowState& state) {
  if (mechanism == Mechanism::hideApp) return std::nullopt;
  if (!state.answers) return unanswered(mechanism);
  if (!state.frame) return PellowError::windowGone();
  return std::nullopt;
}

bool contains(const std::vector<TargetWindow>& windows, const TargetWindow& window) {
  return std::ranges::find(windows, window) != windows.end();
}

}  // namespace

// Nothing asks this process about itself: its windows belong to the main thread.
Task<> Departures::pellowFocused(std::optional<ProcessID> frontmostApplication) {
  if (frontmostApplication == around_.ownProcess) frontmostApplication.reset();
  const bool isHandedOver = handovers_ > 0;
  auto window = co_await around_.axQueue.ax(
      [&] { return TargetWindow::frontmost(around_.accessibility, frontmostApplication); });
  // One that comes back is about to get the keyboard.
  if (!window) window = around_.ledger.lastComingBack();
  // On its way to the next window the keyboard may be nowhere.
  if (window ? isLeavingKeyboard(*window) : handovers_ > 0) {
    ++waitForFocus_;
    co_return;
  }
  if (!window && isHandedOver) co_return co_await pellowNextFocused();
  if (!window) throw PellowError::noFocusedWindow();
  if (isOnTheWayBack(*window, around_.preferences.mechanism()))
    waitForReturn_.push_back(*window);
  else
    co_await pellowByPreference(*window);
}

// It is on its way, or there, and the next window has not got the keyboard yet.
bool Departures::isLeavingKeyboard(const TargetWindow& window) const {
  return around_.ledger.contains(window, Ledger::Way::away) ||
         (handovers_ > 0 && around_.tabs.contains(window));
}

void Departures::aWindowIsBack() {
  for (const auto& window : std::exchange(waitForReturn_, {}))
    if (isOnTheWayBack(window, around_.preferences.mechanism()))
      waitForReturn_.push_back(window);
    else
      around_.tasks.start(pellowByPreference(window));
}

void Departures::tasksHaveEnded() {
  waitForReturn_.clear();
  waitForFocus_ = handovers_ = 0;
}

// A window of an application that comes to the front would show all of it again.
bool Departures::isOnTheWayBack(const TargetWindow& window, Mechanism mechanism) const {
  return mechanism == Mechanism::hideApp ? around_.ledger.isComingBack(window.pid)
                                         : around_.ledger.contains(window, Ledger::Way::back);
}

Task<> Departures::pellowByPreference(TargetWindow window) {
  if (around_.preferences.mechanism() == Mechanism::hideApp)
    co_await pellowApp(window, std::nullopt, {});
  else
    co_await pellow(window, std::nullopt, std::nullopt);
}

Task<> Departures::pellow(TargetWindow window, std::optional<UUID> zoneID,
                          std::optional<Mechanism> mechanism) {
  const auto chosen = practicable(mechanism.value_or(around_.preferences.mechanism()));
  if (isTaken(window) || isOnTheWayBack(window, chosen)) co_return;
  const auto application = around_.workspace.application(window.pid);
  if (!application) co_return around_.failures.report(PellowError::windowGone());
  co_await depart({{*application, window, chosen, chooseZone(*application, zoneID)}});
}

Task<> Departures::pellowApp(TargetWindow of, std::optional<UUID> zoneID,
                             std::vector<TargetWindow> excluding) {
  const auto application = around_.workspace.application(of.pid);
  if (!application) co_return around_.failures.report(PellowError::windowGone());
  std::vector windows{of};
  if (around_.preferences.mechanism() != Mechanism::hideApp || !excluding.empty())
    windows = co_await around_.axQueue.ax(
        [&] { return TargetWindow::windows(around_.accessibility, of.pid); });
  co_await pellowApps({{*application, std::move(windows), zoneID}}, std::move(excluding));
}

Task<> Departures::pellowApps(std::vector<AppWindows> applications,
                              std::vector<TargetWindow> excluding) {
  std::vector<Chosen> windows;
  for (const auto& each : applications)
    for (auto& chosen : choose(each, excluding)) windows.push_back(std::move(chosen));
  co_await depart(std::move(windows));
}

std::vector<Departures::Chosen> Departures::choose(const AppWindows& from,
                                                   const std::vector<TargetWindow>& excluding) {
  const auto& [application, windows, zoneID] = from;
  const auto zone = chooseZone(application, zoneID);
  auto mechanism = practicable(around_.preferences.mechanism());
  if (mechanism == Mechanism::hideApp) {
    const bool someStay =
        std::ranges::find(excluding, application.pid, &TargetWindow::pid) != excluding.end();
    if (!someStay) {
      if (around_.ledger.isComingBack(application.pid)) return {};
      // One window stands for all.
      const auto first =
          std::ranges::find_if_not(windows, [this](const auto& each) { return isTaken(each); });
      if (hasTabForApp(application.pid))
        hideAgain(application.pid);
      else if (first != windows.end())
        return {{application, *first, mechanism, zone}};
      return {};
    }
    // Hiding the application would also hide the windows that should stay.
    mechanism = practicable(Mechanism::offscreen);
  }
  std::vector<Chosen> chosen;
  for (const auto& window : windows)
    if (!contains(excluding, window)) chosen.push_back({application, window, mechanism, zone});
  return chosen;
}

// Where a window would not leave the displays, it is minimized.
Mechanism Departures::practicable(Mechanism mechanism) {
  if (mechanism != Mechanism::offscreen || !around_.workspace.keepsWindowsOnDisplays())
    return mechanism;
  if (!std::exchange(hasToldOfKeeping_, true))
    around_.log.standard("This desktop keeps windows on its displays; they are minimized instead");
  return Mechanism::minimize;
}

// Its tab stayed when the application was unhidden from outside.
void Departures::hideAgain(ProcessID pid) {
  if (!around_.workspace.hide(pid)) around_.failures.report(PellowError::hideFailed(around_.texts));
  around_.echoes.settle(pid, EchoGuard::settleTime);
}

Task<> Departures::depart(std::vector<Chosen> windows) {
  // Pictures take time, in which windows already looked at could move.
  const auto atOnce = around_.snapshots.isEnabled() ? 1 : windowsTogether;
  std::vector<PellowError> failures;
  for (auto next = windows.begin(); next != windows.end();) {
    std::vector<Chosen> together;
    for (; next != windows.end() && together.size() < atOnce; ++next)
      if (!isTaken(next->window)) together.push_back(*next);
    if (together.empty()) break;
    const auto failed = co_await departTogether(std::move(together));
    failures.insert(failures.end(), failed.begin(), failed.end());
  }
  around_.failures.report(failures);
  co_await handOverFocus(failures.empty());
}

// Whoever asked for the focused window meanwhile meant the one that has the keyboard now.
Task<> Departures::handOverFocus(bool haveAllLeft) {
  ++handovers_;
  co_await around_.focus.handOver();
  --handovers_;
  const int waiting = std::exchange(waitForFocus_, 0);
  for (int count = 0; haveAllLeft && count < waiting; ++count)
    around_.tasks.start(pellowNextFocused());
}

Task<> Departures::pellowNextFocused() {
  try {
    co_await pellowFocused(around_.workspace.frontmostApplication());
  } catch (const PellowError& error) {
    // The window before was the last one: a key that was pressed twice.
    if (error.code() != PellowError::Code::noFocusedWindow) throw;
  }
}

// What can be done for all at once comes first; then they go one by one. Returns the failures of
// single windows.
Task<std::vector<PellowError>> Departures::departTogether(std::vector<Chosen> windows) {
  std::list<Departure> departures;
  std::vector<TargetWindow> targets;
  for (const auto& chosen : windows) {
    departures.push_back({around_.ledger.claim(chosen.window), parkingSide(chosen.zone)});
    targets.push_back(chosen.window);
  }
  const auto states = co_await read(std::move(targets));

  std::vector<PellowError> failures;
  auto departure = departures.begin();
  for (std::size_t i = 0; i < windows.size(); ++i) {
    if (const auto failure = obstacle(windows[i].mechanism, states[i])) {
      failures.push_back(*failure);
      departure = departures.erase(departure);
    } else {
      setTab(*departure++, windows[i], states[i]);
    }
  }
  for (auto& each : departures) co_await photograph(each);
  around_.mechanisms.record(departures);
  for (; !departures.empty(); departures.pop_front()) {
    try {
      co_await leave(departures.front());
    } catch (const PellowError& error) {
      failures.push_back(error);
    }
  }
  co_return failures;
}

// A window that does not answer in time stands for the next ones of its application.
Task<std::vector<WindowState>> Departures::read(std::vector<TargetWindow> windows) {
  co_return co_await around_.axQueue.ax([&] {
    std::vector<WindowState> states;
    std::optional<ProcessID> silent;
    for (const auto& window : windows) {
      states.push_back(window.pid == silent ? WindowState{.answers = false} : window.state());
      if (!states.back().answers) silent = window.pid;
    }
    return states;
  });
}

Task<bool> Departures::isMinimized(TargetWindow window) {
  co_return (co_await read({std::move(window)})).front().isMinimized;
}

void Departures::setTab(Departure& departure, const Chosen& chosen, const WindowState& state) {
  const auto& [application, window, mechanism, zone] = chosen;
  departure.wasMinimized = state.isMinimized;
  departure.claim.setTab(
      {.id = around_.uuids.next(),
       .window = window,
       .appName = application.localizedName,
       .bundleID = application.bundleID,
       .title = state.title,
       .icon = application.icon,
       .mechanism = mechanism,
       .screenID = state.frame ? around_.displays.screenID(*state.frame) : std::nullopt,
       .originalFrame = state.frame,
       .zoneID = zone.id});
}

Task<> Departures::photograph(Departure& departure) {
  auto& tab = departure.tab();
  if (departure.wasMinimized)
    tab.snapshot = around_.snapshots.cachedSnapshot(tab.window.element);
  else if (tab.originalFrame)
    tab.snapshot =
        co_await around_.snapshots.snapshotIfEnabled(tab.window.pid, tab.title, *tab.originalFrame);
}

// The tab is published only when the window is hidden.
Task<> Departures::leave(Departure& departure) {
  const auto& tab = departure.tab();
  // While others went before it, the user may have taken it out of the Dock.
  if (tab.mechanism == Mechanism::minimize && departure.wasMinimized &&
      co_await isMinimized(tab.window))
    co_return keepInDock(tab);
  const auto tabFrame = around_.flights.projectedTabFrame(tab);
  departure.claim.touch();
  const auto hiding = co_await around_.mechanisms.hide(departure);
  if (hiding.mayBeHidden) {
    publish(tab);
    if (tabFrame) around_.flights.flyOut(tab, *tabFrame);
  }
  if (!hiding.failure) co_return;
  // Away already, unless it was brought back meanwhile.
  if (departure.wasMinimized && !hiding.mayBeHidden && co_await isMinimized(tab.window)) {
    around_.log.error("{}", hiding.failure->errorDescription());
    co_return keepInDock(tab);
  }
  if (hiding.failure->code() == PellowError::Code::moveRefused)
    around_.failures.noteRefusal(tab.window);
  if (*hiding.failure == PellowError::minimizeFailed(AXError::cannotComplete))
    around_.lateMinimizes.expect(tab);
  throw PellowError(*hiding.failure);
}

void Departures::keepInDock(TabItem tab) {
  tab.mechanism = Mechanism::minimize;
  publish(std::move(tab));
}

void Departures::publish(TabItem tab) {
  around_.lateMinimizes.forget(tab.window);
  around_.echoes.settle(tab.window.pid, EchoGuard::settleTime);
  around_.tabs.add(std::move(tab));
}

bool Departures::isTaken(const TargetWindow& window) const {
  return around_.tabs.contains(window) || around_.ledger.contains(window);
}

bool Departures::hasTabForApp(ProcessID pid) const {
  return std::ranges::any_of(around_.tabs.tabs(), [pid](const TabItem& tab) {
    return tab.standsForApp() && tab.window.pid == pid;
  });
}

TabZone Departures::chooseZone(const RunningApplication& application,
                               std::optional<UUID> zoneID) const {
  if (zoneID) return around_.zones.zone(zoneID);
  if (!application.bundleID) return around_.zones.defaultZone();
  const auto pinned = around_.zones.pinnedZone(*application.bundleID);
  return pinned.value_or(around_.zones.defaultZone());
}

}  // namespace pellow
