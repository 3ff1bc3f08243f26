#include "platforms/linux/x11/window_parking.h"

namespace pellow {

// While the window moves, nobody puts it back where it was parked.
std::expected<void, AXError> WindowParking::moveFrame(const WindowKey& window, QuartzPoint origin,
                                                      Deadline deadline) {
  const auto before = frames_.exchange(window, std::nullopt);
  const auto parked = changePlace(window, server_.layout().toPixels(origin), deadline);
  server_.connection().flush();
  frames_.exchange(window, parked ? *parked : before);
  if (!parked) return std::unexpected(parked.error());
  // The window manager may have acted just before the window counted as parked.
  if (*parked && !hasPassed((*parked)->lateUntil)) frames_.noteMoved(window, deadline);
  return {};
}

std::expected<std::optional<WindowParking::Parked>, AXError> WindowParking::changePlace(
    const WindowKey& window, PixelPoint target, Deadline deadline) {
  auto facts = look(server_, window, placeFacets, deadline);
  if (!facts) return std::unexpected(facts.error());
  const auto layout = server_.layout();
  if (facts->frame.origin() == target && facts->state.leftState.empty()) return std::nullopt;

  const bool isShown = layout.showsMostOf(facts->frame);
  const bool comes = layout.showsMostOf(facts->frame.at(target));
  auto left = LeftState::remembered(facts->state.leftState);
  const bool leavesStates = LeftState::of(facts->state).isFixed();
  if (leavesStates) {
    facts = states_.leave(*facts, deadline);
    if (!facts) return std::unexpected(facts.error());
    left = LeftState::remembered(facts->state.leftState);
  } else if (!comes && isShown) {
    left = {};  // somebody else has brought it back since
  }
  if (comes && left.isFixed()) {
    if (const auto back = bringBack(*facts, target, deadline); !back)
      return std::unexpected(back.error());
    return std::nullopt;
  }

  left.states |= LeftState::putAway | LeftState::onItsWay;
  if (!left.origin) left.origin = facts->frame.origin();
  left.parkedPlace = target;
  if (!comes && left.words() != facts->state.leftState) states_.remember(*facts, left);
  const auto moved = mover_.move(*facts, target, deadline);
  if (!moved) return std::unexpected(moved.error());
  if (!comes) {
    left.states &= ~LeftState::onItsWay;
    states_.remember(*facts, left);
    const auto settled = leavesStates ? deadlineIn(ParkedFrames::arrangePatience) : Deadline();
    return Parked{target, moved->isManagerLate ? Deadline::max() : settled};
  }
  if (!facts->state.leftState.empty()) states_.remember(*facts, {});
  return std::nullopt;
}

std::expected<void, AXError> WindowParking::bringBack(const WindowFacts& window, PixelPoint target,
                                                      Deadline deadline) {
  const auto left = LeftState::remembered(window.state.leftState);
  const auto layout = server_.layout();
  // Back to where it stood before it was maximized, if that is on the monitor that it comes to.
  const bool sameMonitor = left.origin && layout.showsMostOf(window.frame.at(*left.origin)) &&
                           layout.monitorWithMostOf(window.frame.at(*left.origin)) ==
                               layout.monitorWithMostOf(window.frame.at(target));
  const auto moved = mover_.move(window, sameMonitor ? *left.origin : target, deadline);
  if (!moved) return std::unexpected(moved.error());
  return states_.takeUp(moved->facts, left, deadline);
}

void WindowParking::finishInterruptedMoves() {
  // What the dead Pellow asked for happens before anybody looks, and before windows of this process
  // may get the numbers of its windows.
  awaitWindowManager(server_);
  const Deadline deadline = server_.patience();
  const auto windows = clientList(server_, server_.atoms().netClientList, deadline);
  const auto layout = server_.layout();
  for (const auto& window : lookAtAll(server_, windows, placeFacets, deadline)) {
    const auto left = LeftState::remembered(window.state.leftState);
    const bool isPutAway = left.states & LeftState::putAway;
    const bool isOnItsWay = left.states & LeftState::onItsWay;
    if (layout.showsMostOf(window.frame)) {
      // It left its states to move and has not moved; or it came back without them.
      const bool isInterrupted = !isPutAway || isOnItsWay || left.origin == window.frame.origin();
      // The window manager allowed part of the way, still in sight.
      if (isOnItsWay && left.origin) mover_.ask(window, *left.origin);
      if ((left.states & ~LeftState::onItsWay) == LeftState::putAway) states_.remember(window, {});
      if (!left.isFixed() || LeftState::of(window.state).isFixed() || !isInterrupted) continue;
      states_.askToTakeUp(window, left);
      states_.remember(window, {});
    } else if (isPutAway && left.parkedPlace && *left.parkedPlace != window.frame.origin() &&
               !layout.showsMostOf(window.frame.at(*left.parkedPlace))) {
      // The window manager allowed part of the way, and the rest was never made.
      (void)mover_.push(window, *left.parkedPlace, deadline);
    }
  }
  server_.connection().flush();
}

}  // namespace pellow
