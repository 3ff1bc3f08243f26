#include "platforms/linux/x11/window_states.h"

#include "platforms/linux/x11/source_indication.h"

namespace pellow {

namespace {

constexpr Seconds settlePatience = 0.1;

}  // namespace

std::expected<WindowFacts, AXError> WindowStates::leave(const WindowFacts& window,
                                                        Deadline deadline) {
  LeftState left;
  WindowFacts now = window;
  // A window that was maximized before it became full screen may be so again after it.
  for (int step = 0; step < 2 && LeftState::of(now.state).isFixed(); ++step) {
    left.states |= LeftState::of(now.state).states;
    // Remembered first: a crash in between leaves nothing to repair.
    remember(window, left);
    change(now, LeftState::of(now.state), false);
    auto facts = lookAfterChange(now, deadline);
    if (!facts) return facts;
    now = std::move(*facts);
  }
  if (LeftState::of(now.state).isFixed()) {
    // If it still does the one, it then does the other too.
    askToTakeUp(window, left);
    remember(window, {});
    return std::unexpected(AXError::cannotComplete);
  }
  left.origin = now.frame.origin();
  remember(window, left);
  now.state.leftState = left.words();
  return now;
}

std::expected<void, AXError> WindowStates::takeUp(const WindowFacts& window, const LeftState& left,
                                                  Deadline deadline) {
  askToTakeUp(window, left);
  remember(window, {});
  const auto back = lookAfterChange(window, deadline);
  if (!back) return std::unexpected(back.error());
  return {};
}

void WindowStates::askToTakeUp(const WindowFacts& window, const LeftState& states) {
  change(window, states, true);
}

void WindowStates::unshade(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, placeFacets, deadline);
  if (!facts) return;
  auto left = LeftState::remembered(facts->state.leftState);
  const auto before = left;
  left.states &= ~LeftState::shadedUntilIconified;
  if (facts->state.shaded) left.states |= LeftState::shadedUntilIconified;
  if (left != before) remember(*facts, left);
  if (!facts->state.shaded) return;
  change(*facts, {LeftState::shaded}, false);
  (void)lookAfterChange(*facts, deadline);
}

void WindowStates::shadeAgain(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return;
  auto left = LeftState::remembered(facts->state.leftState);
  if (!(left.states & LeftState::shadedUntilIconified)) return;
  askToTakeUp(*facts, {LeftState::shaded});
  left.states &= ~LeftState::shadedUntilIconified;
  remember(*facts, left);
  server_.connection().flush();
}

void WindowStates::remember(const WindowFacts& window, const LeftState& left) {
  auto* raw = server_.connection().raw();
  const auto property = server_.atoms().pellowState;
  const auto words = left.words();
  if (left.states != 0)
    xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window.window, property, XCB_ATOM_INTEGER, 32,
                        static_cast<std::uint32_t>(words.size()), words.data());
  else
    xcb_delete_property(raw, window.window, property);
}

// Full screen is left first and taken up last: the states it covers are kept below it.
void WindowStates::change(const WindowFacts& window, const LeftState& states, bool add) {
  const auto& atoms = server_.atoms();
  const auto ask = [&](xcb_atom_t first, xcb_atom_t second) {
    server_.connection().sendToWindowManager(window.window, atoms.netWMState,
                                             {add ? 1u : 0u, first, second, sourcePager, 0});
  };
  const bool horizontal = states.states & LeftState::horizontal;
  const bool vertical = states.states & LeftState::vertical;
  const bool fullScreen = states.states & LeftState::fullScreen;
  const bool shaded = states.states & LeftState::shaded;
  if (shaded && !add) ask(atoms.netWMStateShaded, 0);
  if (fullScreen && !add) ask(atoms.netWMStateFullscreen, 0);
  if (horizontal || vertical)
    ask(horizontal ? atoms.netWMStateMaximizedHorz : atoms.netWMStateMaximizedVert,
        horizontal && vertical ? atoms.netWMStateMaximizedVert : 0);
  if (fullScreen && add) ask(atoms.netWMStateFullscreen, 0);
  if (shaded && add) ask(atoms.netWMStateShaded, 0);
}

// The state changes before the frame does, and some window managers answer in between. Once it has
// changed, a look that comes too late for the frame is no failure.
std::expected<WindowFacts, AXError> WindowStates::lookAfterChange(const WindowFacts& before,
                                                                  Deadline deadline) {
  const auto window = before.key();
  const auto hasNewState = [&](const WindowFacts& now) {
    return LeftState::of(now.state) != LeftState::of(before.state);
  };
  auto facts =
      WindowWatch(server_, window).lookUntil(placeFacets, stepPatience, deadline, hasNewState);
  if (!facts || !hasNewState(*facts)) return facts;
  const auto never = [](const WindowFacts&) { return false; };
  const auto latestOr = [&](std::expected<WindowFacts, AXError> latest) {
    return latest || latest.error() != AXError::cannotComplete ? latest : facts;
  };
  facts = latestOr(WindowWatch(server_, window).lookAfterManagerActed(deadline, never));
  if (!facts || facts->state.isExpanded() == before.state.isExpanded()) return facts;
  return latestOr(
      WindowWatch(server_, window)
          .lookUntil(placeFacets, settlePatience, deadline,
                     [&](const WindowFacts& now) { return now.frame != before.frame; }));
}

}  // namespace pellow
