#include "engine/pellow_controller.h"

#include <algorithm>
#include <utility>

#include "access/ax.h"

namespace pellow {
namespace {

// The side that a zone's windows are slid to: its own, or the nearer one.
StripEdge parkingSide(const TabZone& zone) {
  if (zone.snap == StripEdge::left || zone.snap == StripEdge::right) return *zone.snap;
  return zone.position.x >= 0.5 ? StripEdge::right : StripEdge::left;
}

std::expected<void, AXError> setMinimized(const TargetWindow& window, bool minimized) {
  window.element.setMessagingTimeout(AX::timeout::windowChange);
  return window.element.setAttribute(AX::attribute::minimized, minimized);
}

bool isGone(const PellowError& error) { return error.axError() == AXError::invalidUIElement; }

}  // namespace

PellowController::PellowController(const Surroundings& surroundings)
    : around_(surroundings),
      store_(around_.notifications, around_.workspace),
      displays_(around_.screens),
      journal_(around_.userDefaults),
      parking_(displays_, journal_, around_.accessibility, around_.workspace, around_.clock,
               around_.log, around_.ownProcess),
      destroyedWindows_(around_.accessibility, around_.queues.main(),
                        [this] { store_.pruneDead(); }),
      axQueue_(around_.queues),
      tasks_([this](std::exception_ptr failure) {
        try {
          std::rethrow_exception(failure);
        } catch (const PellowError& error) {
          report(error, 0);
        } catch (const std::exception& error) {
          around_.log.error("An action ended: {}", error.what());
        }
      }) {}

PellowController::~PellowController() = default;

void PellowController::start() {
  displays_.recordMainHeight();
  subscriptions_.push_back(
      around_.screens.onDidChangeParameters([this] { displays_.recordMainHeight(); }));
  subscriptions_.push_back(
      around_.notifications.observe(TabStore::didChange, [this] { tabsDidChange(); }));

  strip_ = std::make_unique<TabStripController>(TabStripController::Surroundings{
      store_, around_.zones, around_.preferences, around_.userDefaults, around_.screens,
      around_.panels, around_.notifications});
  strip_->onActivate = [this](const std::vector<UUID>& ids) { restore(ids); };
}

// Pellowing

void PellowController::pellowFrontmost() { tasks_.start(pellowFocusedWindow()); }

Task<> PellowController::pellowFocusedWindow() {
  const auto window = co_await axQueue_.ax(
      [&] { return TargetWindow::frontmost(around_.accessibility, around_.workspace); });
  if (!window) {
    report(PellowError::noFocusedWindow(), 0);
    co_return;
  }
  co_await pellow(*window, std::nullopt, std::nullopt);
}

Task<> PellowController::pellow(TargetWindow window, std::optional<UUID> zoneID,
                                std::optional<Mechanism> mechanism) {
  if (store_.contains(window) || ledger_.contains(window)) co_return;
  const auto zone = chooseZone(window, zoneID);
  const auto chosen = mechanism.value_or(around_.preferences.mechanism());
  try {
    if (chosen == Mechanism::hideApp) {
      co_await hideApp(window, zone);
    } else {
      co_await park(window, chosen, zone);
    }
  } catch (const PellowError& error) {
    report(error, 0);
  }
}

Task<> PellowController::hideApp(TargetWindow window, TabZone zone) {
  auto claim = ledger_.claim(window);
  const auto application = around_.workspace.application(window.pid);
  if (!application) throw PellowError::windowGone();
  const auto state = co_await read(window);

  const auto tab = makeTab(window, *application, state, Mechanism::hideApp, zone);
  claim.setTab(tab);
  if (!around_.workspace.hide(window.pid)) throw PellowError::hideFailed();
  store_.add(tab);
}

Task<> PellowController::park(TargetWindow window, Mechanism mechanism, TabZone zone) {
  auto claim = ledger_.claim(window);
  const auto application = around_.workspace.application(window.pid);
  const auto state = co_await read(window);
  if (!application || !state.frame) throw PellowError::windowGone();

  const auto tab = makeTab(window, *application, state, mechanism, zone);
  claim.setTab(tab);
  if (mechanism == Mechanism::offscreen) {
    co_await slideOffscreen(tab, parkingSide(zone));
  } else if (!state.isMinimized) {
    co_await minimize(tab);
  }
  store_.add(tab);
}

Task<PellowController::WindowState> PellowController::read(TargetWindow window) {
  co_return co_await axQueue_.ax([&] {
    return WindowState{AX::string(window.element, AX::attribute::title).value_or(""),
                       AX::frame(window.element),
                       AX::boolean(window.element, AX::attribute::minimized).value_or(false)};
  });
}

Task<> PellowController::minimize(const TabItem& tab) {
  const auto done = co_await axQueue_.ax([&] { return setMinimized(tab.window, true); });
  if (!done) throw PellowError::minimizeFailed(done.error());
}

// Record first, then move, then look: a window that stays in sight goes back and has no tab. One
// that nobody can say anything about keeps a tab, as it may be hidden.
Task<> PellowController::slideOffscreen(const TabItem& tab, StripEdge side) {
  const auto target = parking_.parkOrigin(*tab.originalFrame, side);
  if (tab.bundleID) {
    const auto written =
        journal_.append({*tab.bundleID, tab.title, tab.originalFrame->origin, target});
    if (!written) {
      around_.log.error("Could not write the parked-window journal: {}", written.error().sentence);
      forgetRecord(tab);
      throw PellowError::moveFailed(AXError::failure);
    }
  }

  std::optional<PellowError> failure;
  try {
    const auto taken =
        co_await axQueue_.ax([&] { return tab.window.move(target, Verify::yes, around_.clock); });
    if (displays_.isHidden({taken, tab.originalFrame->size})) co_return;
    failure = PellowError::moveRefused(tab.appName);
  } catch (const PellowError& error) {
    failure = error;
  }
  if (!co_await slideBack(tab)) store_.add(tab);
  throw *failure;
}

Task<bool> PellowController::slideBack(const TabItem& tab) {
  try {
    co_await axQueue_.ax(
        [&] { return tab.window.move(tab.originalFrame->origin, Verify::yes, around_.clock); });
  } catch (const PellowError& error) {
    around_.log.error("{}", error.errorDescription());
    if (!isGone(error)) co_return false;
  }
  forgetRecord(tab);
  co_return true;
}

// Restoring

void PellowController::restoreAll() {
  std::vector<UUID> ids;
  for (const auto& tab : store_.tabs()) ids.push_back(tab.id);
  restore(ids);
}

void PellowController::restore(const std::vector<UUID>& ids) {
  store_.pruneDead();
  std::list<Returning> returning;
  for (const auto& tab : store_.tabs()) {
    if (std::ranges::find(ids, tab.id) == ids.end()) continue;
    returning.push_back({tab, ledger_.claim(tab.window)});
    returning.back().claim.setTab(tab);
  }
  if (returning.empty()) return;
  store_.remove(ids);
  tasks_.start(restoreBatch(std::move(returning)));
}

Task<> PellowController::restoreBatch(std::list<Returning> returning) {
  std::optional<PellowError> first;
  int failures = 0;
  for (; !returning.empty(); returning.pop_front()) {
    try {
      co_await restore(returning.front().tab);
    } catch (const PellowError& error) {
      if (!first) first = error;
      ++failures;
    }
  }
  if (first) report(*first, failures - 1);
}

Task<> PellowController::restore(const TabItem& tab) {
  std::optional<PellowError> failure;
  try {
    const auto role =
        co_await axQueue_.ax([&] { return tab.window.element.copyAttribute(AX::attribute::role); });
    // An application that is merely slow still has its window.
    if (!role && role.error() == AXError::invalidUIElement) {
      failure = PellowError::moveFailed(role.error());
    } else {
      co_await reveal(tab);
    }
  } catch (const PellowError& error) {
    failure = error;
  }
  if (!failure) co_return;

  if (isGone(*failure)) {
    around_.log.standard("Dropping tab whose window no longer exists");
    forgetRecord(tab);
    co_return;
  }
  store_.add(tab);
  throw *failure;
}

Task<> PellowController::reveal(const TabItem& tab) {
  switch (tab.mechanism) {
    case Mechanism::minimize: {
      const auto done = co_await axQueue_.ax([&] { return setMinimized(tab.window, false); });
      if (!done) throw PellowError::unminimizeFailed(done.error());
      break;
    }
    case Mechanism::offscreen: {
      if (!tab.originalFrame) throw PellowError::moveFailed(AXError::noValue);
      const auto origin = parking_.restoreOrigin(*tab.originalFrame);
      co_await axQueue_.ax([&] { return tab.window.move(origin, Verify::yes, around_.clock); });
      forgetRecord(tab);
      break;
    }
    case Mechanism::hideApp:
      around_.workspace.unhide(tab.window.pid);
      break;
  }
  co_await bringToFront(tab.window);
}

Task<> PellowController::bringToFront(const TargetWindow& window) {
  const auto raised = co_await axQueue_.ax([&] {
    window.element.setMessagingTimeout(AX::timeout::windowChange);
    return window.element.performAction(AX::action::raise);
  });
  if (!raised)
    around_.log.standard("raise failed after successful restore: {}", explanation(raised.error()));
  around_.workspace.activate(window.pid);
}

void PellowController::restoreAllBlocking() {
  const auto underWay = ledger_.tabs();
  tasks_.cancel();
  for (const auto& tab : underWay) putBackBlocking(tab);
  std::vector<UUID> ids;
  for (const auto& tab : store_.tabs()) {
    putBackBlocking(tab);
    ids.push_back(tab.id);
  }
  store_.remove(ids);
  if (const auto written = journal_.write({}); !written)
    around_.log.error("Could not write the parked-window journal: {}", written.error().sentence);
}

void PellowController::putBackBlocking(const TabItem& tab) {
  switch (tab.mechanism) {
    case Mechanism::hideApp:
      around_.workspace.unhide(tab.window.pid);
      break;
    case Mechanism::offscreen:
      if (!tab.originalFrame) break;
      tab.window.element.setMessagingTimeout(AX::timeout::windowChange);
      // Nobody is left to tell of a failure.
      (void)tab.window.element.setAttribute(AX::attribute::position,
                                            parking_.restoreOrigin(*tab.originalFrame));
      break;
    case Mechanism::minimize:
      (void)setMinimized(tab.window, false);
      break;
  }
}

// Bookkeeping

TabZone PellowController::chooseZone(const TargetWindow& window, std::optional<UUID> zoneID) const {
  if (zoneID) return around_.zones.zone(zoneID);
  const auto application = around_.workspace.application(window.pid);
  if (!application || !application->bundleID) return around_.zones.defaultZone();
  const auto pinned = around_.zones.pinnedZone(*application->bundleID);
  return pinned.value_or(around_.zones.defaultZone());
}

TabItem PellowController::makeTab(const TargetWindow& window, const RunningApplication& application,
                                  const WindowState& state, Mechanism mechanism,
                                  const TabZone& zone) {
  return {.id = around_.uuids.next(),
          .window = window,
          .appName = application.localizedName,
          .bundleID = application.bundleID,
          .title = state.title,
          .icon = application.icon,
          .mechanism = mechanism,
          .screenID = state.frame ? displays_.screenID(*state.frame) : std::nullopt,
          .originalFrame = state.frame,
          .zoneID = zone.id};
}

// The tabs, whole or under way, whose windows stand in the journal.
std::vector<TabItem> PellowController::parkedTabs() const {
  auto tabs = ledger_.tabs();
  tabs.insert(tabs.end(), store_.tabs().begin(), store_.tabs().end());
  std::erase_if(tabs, [](const TabItem& tab) {
    return tab.mechanism != Mechanism::offscreen || !tab.bundleID || !tab.originalFrame;
  });
  return tabs;
}

void PellowController::forgetRecord(const TabItem& tab) {
  if (tab.mechanism != Mechanism::offscreen || !tab.bundleID) return;
  std::vector<QuartzPoint> siblings;
  for (const auto& other : parkedTabs())
    if (other.id != tab.id && other.bundleID == tab.bundleID && other.title == tab.title)
      siblings.push_back(other.originalFrame->origin);
  if (const auto written = journal_.forget(*tab.bundleID, tab.title, siblings); !written)
    around_.log.error("Could not write the parked-window journal: {}", written.error().sentence);
}

// Tabs leave the store for many reasons: their window is closed, their application quits. What they
// leave in the journal would send the next launch looking for windows that do not exist.
void PellowController::tabsDidChange() {
  destroyedWindows_.watch(store_.tabs());

  const auto parked = parkedTabs();
  if (journal_.records().size() <= parked.size()) return;
  auto records = journal_.records();
  std::erase_if(records, [&](const ParkingRecord& record) {
    return std::ranges::none_of(parked, [&](const TabItem& tab) {
      return tab.bundleID == record.bundleID && tab.title == record.title &&
             tab.originalFrame->origin == record.originalOrigin;
    });
  });
  if (records == journal_.records()) return;
  if (const auto written = journal_.write(std::move(records)); !written)
    around_.log.error("Could not write the parked-window journal: {}", written.error().sentence);
}

// Failures

void PellowController::report(const PellowError& error, int additional) {
  around_.log.error("{}", error.errorDescription());
  tasks_.start(tell(error, additional));
}

Task<> PellowController::tell(PellowError error, int additional) {
  auto text = error.errorDescription();
  if (additional > 0) text += fmt::format("\n\nAnd {} more.", additional);
  co_await around_.alerts.present({.style = AlertStyle::warning,
                                   .messageText = "Pellow could not complete that action",
                                   .informativeText = std::move(text),
                                   .buttons = {"OK"}});
}

}  // namespace pellow
