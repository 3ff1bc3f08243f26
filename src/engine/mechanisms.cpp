#include "engine/mechanisms.h"

#include <utility>
#include <vector>

#include "access/ax.h"
#include "access/target_window.h"

namespace pellow {
namespace {

constexpr Seconds minimizeEcho = 2;
constexpr int movesAtMost = 3;
constexpr Seconds hiddenWithin = 0.6;
constexpr Seconds readHiddenEvery = 0.02;

std::expected<void, AXError> setMinimized(const TargetWindow& window, bool minimized,
                                          Seconds timeout = AX::timeout::windowChange) {
  return window.element.setAttribute(AX::attribute::minimized, minimized, timeout);
}

}  // namespace

void Mechanisms::record(std::list<Departure>& departures) {
  if (departures.size() < 2) return;
  std::vector<ParkedWindows::Place> places;
  for (auto& departure : departures) {
    const auto& tab = departure.tab();
    if (tab.mechanism != Mechanism::offscreen) continue;
    departure.recordedAt = around_.places.parkOrigin(*tab.originalFrame, departure.side);
    places.push_back({tab, *departure.recordedAt});
  }
  if (around_.parkedWindows.record(places)) return;
  // Each tries again at its turn and reports its own failure.
  for (auto& departure : departures) departure.recordedAt.reset();
}

Task<Mechanisms::Hiding> Mechanisms::hide(Departure& departure) {
  const auto& tab = departure.tab();
  switch (tab.mechanism) {
    case Mechanism::minimize:
      co_return co_await minimize(tab);
    case Mechanism::offscreen:
      co_return co_await slideOffscreen(departure);
    case Mechanism::hideApp:
      break;
  }
  co_return co_await hideApplication(tab.window.pid);
}

// An application that says it is still shown must not hide later.
Task<Mechanisms::Hiding> Mechanisms::hideApplication(ProcessID pid) {
  if (!around_.workspace.hide(pid)) {
    const bool runs = around_.workspace.application(pid).has_value();
    co_return Hiding{.failure =
                         runs ? PellowError::hideFailed(around_.texts) : PellowError::windowGone()};
  }
  const auto hidden = co_await isHidden(pid, true);
  if (hidden.value_or(true)) co_return Hiding{.mayBeHidden = true};
  around_.workspace.unhide(pid);
  co_return Hiding{.failure = PellowError::hideFailed(around_.texts)};
}

// What the application says once it is as `expected` or has had time to be; nothing when it does
// not say.
Task<std::optional<bool>> Mechanisms::isHidden(ProcessID pid, bool expected) {
  co_return co_await around_.axQueue.ax([&] {
    const auto application = around_.accessibility.application(pid);
    // Its time begins with its first answer: until then the system may be busy with others.
    std::optional<Seconds> deadline;
    while (true) {
      const auto hidden =
          AX::boolean(application, AX::attribute::hidden, AX::timeout::windowChange);
      if (!deadline) deadline = around_.clock.now() + hiddenWithin;
      if (hidden.value_or(expected) == expected || around_.clock.now() > *deadline) return hidden;
      around_.clock.sleep(readHiddenEvery);
    }
  });
}

Task<Mechanisms::Hiding> Mechanisms::minimize(const TabItem& tab) {
  around_.echoes.suppressMinimize(minimizeEcho);
  const auto done = co_await around_.axQueue.ax([&] { return setMinimized(tab.window, true); });
  if (done) co_return Hiding{.mayBeHidden = true};
  co_return Hiding{.failure = PellowError::minimizeFailed(done.error())};
}

// Record, then move, then look: a window that stays in sight goes back and needs no tab. One whose
// place is unknown may be hidden.
Task<Mechanisms::Hiding> Mechanisms::slideOffscreen(Departure& departure) {
  const auto& tab = departure.tab();
  // The displays may have changed since the record.
  const auto target = around_.places.parkOrigin(*tab.originalFrame, departure.side);
  if (departure.recordedAt != target) {
    departure.recordedAt = target;
    if (!around_.parkedWindows.record({{tab, target}}))
      co_return Hiding{.failure = PellowError::moveFailed(AXError::failure)};
  }

  Hiding hiding;
  try {
    const auto taken = co_await around_.axQueue.ax(
        [&] { return tab.window.move(target, Verify::yes, around_.clock); });
    if (around_.displays.isHidden({taken, tab.originalFrame->size}))
      co_return Hiding{.mayBeHidden = true};
    hiding.failure = PellowError::moveRefused(tab.appName);
  } catch (const PellowError& error) {
    hiding.failure = error;
  }
  hiding.mayBeHidden = !co_await slideBack(tab);
  co_return hiding;
}

// Whether the window is certainly no longer hidden.
Task<bool> Mechanisms::slideBack(const TabItem& tab) {
  const auto& frame = *tab.originalFrame;
  const auto place = [&] {
    const bool isDisplayGone = around_.displays.isHidden(frame);
    return isDisplayGone ? around_.places.restoreOrigin(frame, around_.log) : frame.origin;
  };
  try {
    if (co_await moveIntoSight(tab, place) != Arrival::inSight) co_return false;
  } catch (const PellowError& error) {
    around_.log.error("{}", error.errorDescription());
    if (!error.isWindowGone()) co_return false;
  }
  around_.parkedWindows.forget(tab);
  co_return true;
}

Task<> Mechanisms::reveal(const TabItem& tab) {
  switch (tab.mechanism) {
    case Mechanism::minimize:
      co_await unminimize(tab.window);
      break;
    case Mechanism::offscreen: {
      if (!tab.originalFrame) throw PellowError::moveFailed(AXError::noValue);
      co_await moveHome(tab);
      around_.parkedWindows.forget(tab);
      co_await unminimizeIfNeeded(tab.window);
      break;
    }
    case Mechanism::hideApp:
      around_.workspace.unhide(tab.window.pid);
      co_await isHidden(tab.window.pid, false);
      co_await unminimizeIfNeeded(tab.window);
      break;
  }
  co_await bringToFront(tab.window);
}

// To where the window belongs now. Throws when it is still out of sight though it could be seen.
Task<> Mechanisms::moveHome(const TabItem& tab) {
  const auto home = [&] { return around_.places.restoreOrigin(*tab.originalFrame, around_.log); };
  if (co_await moveIntoSight(tab, home) == Arrival::outOfSight)
    throw PellowError::moveFailed(AXError::failure);
}

// If the displays change while the move waits for its turn, the window is moved again.
Task<Mechanisms::Arrival> Mechanisms::moveIntoSight(const TabItem& tab, Place place) {
  auto origin = place();
  for (int attempt = 0; attempt < movesAtMost; ++attempt) {
    auto size = tab.originalFrame->size;
    const auto taken = co_await around_.axQueue.ax([&] {
      const auto there = tab.window.move(origin, Verify::yes, around_.clock);
      // It may have been resized on its way.
      if (const auto frame = tab.window.state().frame) size = frame->size;
      return there;
    });
    if (!around_.displays.isHidden({taken, size})) co_return Arrival::inSight;
    const auto asked = std::exchange(origin, place());
    if (origin != asked) continue;
    if (taken == asked) co_return Arrival::withoutDisplay;
    break;
  }
  co_return Arrival::outOfSight;
}

Task<> Mechanisms::unminimize(const TargetWindow& window) {
  const auto done = co_await around_.axQueue.ax([&] { return setMinimized(window, false); });
  if (!done) throw PellowError::unminimizeFailed(done.error());
}

// A window that the user minimized, before it was put away or since, is not back while in the Dock.
Task<> Mechanisms::unminimizeIfNeeded(const TargetWindow& window) {
  const auto isMinimized = co_await around_.axQueue.ax([&] {
    return AX::boolean(window.element, AX::attribute::minimized, AX::timeout::windowChange)
        .value_or(false);
  });
  if (isMinimized) co_await unminimize(window);
}

// The system may take an activation as a mere wish. Writing `frontmost` is a command; if the
// application does not take it, the wish must do.
Task<> Mechanisms::bringToFront(const TargetWindow& window) {
  const auto raised = co_await around_.axQueue.ax([&] {
    const auto done = window.element.performAction(AX::action::raise, AX::timeout::windowChange);
    (void)around_.accessibility.application(window.pid)
        .setAttribute(AX::attribute::frontmost, true, AX::timeout::application);
    return done;
  });
  if (!raised)
    around_.log.standard("raise failed after successful restore: {}",
                         PellowError::raiseFailed(raised.error()).errorDescription());
  around_.workspace.activate(window.pid);
}

std::expected<void, AXError> Mechanisms::revealBlocking(const TabItem& tab, Seconds timeout) {
  switch (tab.mechanism) {
    case Mechanism::hideApp:
      around_.workspace.unhide(tab.window.pid);
      break;
    case Mechanism::offscreen:
      if (!tab.originalFrame) break;
      return tab.window.element.setAttribute(
          AX::attribute::position, around_.places.restoreOrigin(*tab.originalFrame, around_.log),
          timeout);
    case Mechanism::minimize:
      return setMinimized(tab.window, false, timeout);
  }
  return {};
}

}  // namespace pellow
