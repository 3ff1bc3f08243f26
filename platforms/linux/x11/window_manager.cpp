#include "platforms/linux/x11/window_manager.h"

#include <algorithm>
#include <array>

namespace pellow {

namespace {

// How long a window manager may take for one step.
constexpr Seconds movePatience = 0.25;
constexpr Seconds settlePatience = 0.1;
constexpr Seconds mapPatience = 0.25;
constexpr Seconds iconifyPatience = 1;

constexpr std::uint32_t sourcePager = 2;  // "the user wants this", as EWMH has it
constexpr std::uint32_t iconicState = 3;

// Hears of everything that happens to a window, for as long as somebody waits for it: a connection
// that listened all the time would have to be read all the time.
class Watch {
 public:
  Watch(X11Connection& connection, xcb_window_t window) : connection_(connection), window_(window) {
    connection_.dropEvents();
    select(window_, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
    // The frame around the window is a child of the root.
    select(connection_.root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch() {
    select(window_, XCB_EVENT_MASK_NO_EVENT);
    select(connection_.root(), XCB_EVENT_MASK_NO_EVENT);
    connection_.flush();
    connection_.dropEvents();
  }

  // Waits for the next change; false when none comes.
  bool wait(Deadline deadline) {
    if (!connection_.waitForEvent(deadline)) return false;
    connection_.dropEvents();
    return true;
  }

 private:
  void select(xcb_window_t window, std::uint32_t mask) {
    xcb_change_window_attributes(connection_.raw(), window, XCB_CW_EVENT_MASK, &mask);
  }

  X11Connection& connection_;
  xcb_window_t window_;
};

// What _PELLOW_STATE holds: which states the window has left, and, once it is known, where the
// frame of the window stood without them.
struct LeftState {
  static constexpr std::uint32_t horizontal = 1;
  static constexpr std::uint32_t vertical = 2;
  static constexpr std::uint32_t fullScreen = 4;

  std::uint32_t states = 0;
  std::optional<PixelPoint> origin;

  static LeftState of(const WindowFacts::State& state) {
    return {(state.maximizedHorizontally ? horizontal : 0) |
            (state.maximizedVertically ? vertical : 0) | (state.fullScreen ? fullScreen : 0)};
  }
  static LeftState remembered(const std::vector<std::uint32_t>& words) {
    LeftState left;
    if (!words.empty()) left.states = words[0];
    if (words.size() >= 3) left.origin = {static_cast<int>(words[1]), static_cast<int>(words[2])};
    return left;
  }
  std::vector<std::uint32_t> words() const {
    if (!origin) return {states};
    return {states, static_cast<std::uint32_t>(origin->x), static_cast<std::uint32_t>(origin->y)};
  }
  bool isTakenUp(const WindowFacts::State& state) const {
    return (LeftState::of(state).states & states) == states;
  }
};

void remember(X11Server& server, xcb_window_t window, const LeftState& left) {
  const auto words = left.words();
  xcb_change_property(server.connection().raw(), XCB_PROP_MODE_REPLACE, window,
                      server.atoms().pellowState, XCB_ATOM_INTEGER, 32,
                      static_cast<std::uint32_t>(words.size()), words.data());
}

}  // namespace

std::expected<WindowFacts, AXError> WindowManager::waitUntil(const WindowKey& window, Facet facets,
                                                             Seconds patience, Deadline deadline,
                                                             const Condition& condition) {
  const Deadline end = std::min(deadlineIn(patience), deadline);
  // The requests that a caller made before are on their way; the selection of events follows them,
  // and the first look comes after it, so that nothing is missed.
  Watch watch(server_.connection(), window.window);
  for (;;) {
    auto facts = look(server_, window, facets, deadline);
    if (!facts || condition(*facts)) return facts;
    if (!watch.wait(end)) return facts;
  }
}

std::expected<void, AXError> WindowManager::moveFrame(const WindowKey& window, QuartzPoint origin,
                                                      Deadline deadline) {
  auto facts = look(server_, window, Facet::state | Facet::frame, deadline);
  if (!facts) return std::unexpected(facts.error());
  const auto layout = server_.layout();
  const PixelPoint target = layout.toPixels(origin);
  if (facts->frame.origin() == target && facts->state.leftState.empty()) return {};

  if (facts->state.isExpanded()) {
    facts = leaveExpandedState(*facts, deadline);
    if (!facts) return std::unexpected(facts.error());
  }
  const auto left = LeftState::remembered(facts->state.leftState);
  const bool comesBack = left.states != 0 && layout.showsMostOf(facts->frame.at(target));
  if (comesBack) return takeUpExpandedState(*facts, target, deadline);
  if (const auto moved = moveTo(*facts, target, deadline); !moved)
    return std::unexpected(moved.error());
  return {};
}

std::expected<WindowFacts, AXError> WindowManager::moveTo(const WindowFacts& window,
                                                          PixelPoint target, Deadline deadline) {
  constexpr std::uint32_t staticGravity = XCB_GRAVITY_STATIC;  // the place is the content's
  constexpr std::uint32_t hasX = 1u << 8;
  constexpr std::uint32_t hasY = 1u << 9;
  const int x = window.content.x + target.x - window.frame.x;
  const int y = window.content.y + target.y - window.frame.y;
  server_.connection().sendToWindowManager(
      window.window, server_.atoms().netMoveResizeWindow,
      {staticGravity | hasX | hasY | sourcePager << 12, static_cast<std::uint32_t>(x),
       static_cast<std::uint32_t>(y), 0, 0});
  return waitUntil(window.key(), Facet::state | Facet::frame, movePatience, deadline,
                   [&](const WindowFacts& now) { return now.frame.origin() == target; });
}

void WindowManager::changeState(xcb_window_t window, bool add, xcb_atom_t first,
                                xcb_atom_t second) {
  server_.connection().sendToWindowManager(window, server_.atoms().netWMState,
                                           {add ? 1u : 0u, first, second, sourcePager, 0});
}

std::expected<WindowFacts, AXError> WindowManager::leaveExpandedState(const WindowFacts& window,
                                                                      Deadline deadline) {
  const auto& atoms = server_.atoms();
  LeftState left = LeftState::of(window.state);
  // First the memory, then the deed: a crash in between leaves nothing to repair.
  remember(server_, window.window, left);
  if (window.state.fullScreen) changeState(window.window, false, atoms.netWMStateFullscreen);
  if (window.state.maximizedHorizontally || window.state.maximizedVertically)
    changeState(window.window, false, atoms.netWMStateMaximizedHorz, atoms.netWMStateMaximizedVert);

  constexpr auto facets = Facet::state | Facet::frame;
  const auto isOut = [](const WindowFacts& now) { return !now.state.isExpanded(); };
  auto facts = waitUntil(window.key(), facets, movePatience, deadline, isOut);
  if (!facts) return facts;
  if (!isOut(*facts)) return std::unexpected(AXError::cannotComplete);

  // The state changes before the frame does.
  facts = waitUntil(window.key(), facets, settlePatience, deadline,
                    [&](const WindowFacts& now) { return now.frame != window.frame; });
  if (!facts) return facts;
  left.origin = facts->frame.origin();
  remember(server_, window.window, left);
  facts->state.leftState = left.words();
  return facts;
}

std::expected<void, AXError> WindowManager::takeUpExpandedState(const WindowFacts& window,
                                                                PixelPoint target,
                                                                Deadline deadline) {
  const auto& atoms = server_.atoms();
  const auto left = LeftState::remembered(window.state.leftState);
  const auto layout = server_.layout();
  // Back to where it stood before it was maximized, if that is on the monitor that it comes to.
  const bool sameMonitor = left.origin && layout.showsMostOf(window.frame.at(*left.origin)) &&
                           layout.monitorWithMostOf(window.frame.at(*left.origin)) ==
                               layout.monitorWithMostOf(window.frame.at(target));
  const auto moved = moveTo(window, sameMonitor ? *left.origin : target, deadline);
  if (!moved) return std::unexpected(moved.error());

  if (left.states & (LeftState::horizontal | LeftState::vertical))
    changeState(window.window, true,
                left.states & LeftState::horizontal ? atoms.netWMStateMaximizedHorz
                                                    : atoms.netWMStateMaximizedVert,
                left.states & LeftState::vertical ? atoms.netWMStateMaximizedVert : 0);
  if (left.states & LeftState::fullScreen)
    changeState(window.window, true, atoms.netWMStateFullscreen);
  xcb_delete_property(server_.connection().raw(), window.window, atoms.pellowState);
  const auto back = waitUntil(window.key(), Facet::state | Facet::frame, movePatience, deadline,
                              [&](const WindowFacts& now) {
                                return left.isTakenUp(now.state) && now.frame.origin() == target;
                              });
  if (!back) return std::unexpected(back.error());
  return {};
}

bool WindowManager::waitForIconified(const WindowKey& window, bool iconified, Seconds patience,
                                     Deadline deadline) {
  const auto desktop = currentDesktop(server_, deadline);
  const auto isDone = [&](const WindowFacts& now) {
    return isIconified(server_, now.state, desktop) == iconified;
  };
  const auto facts = waitUntil(window, Facet::state, patience, deadline, isDone);
  return facts ? isDone(*facts) : facts.error() == AXError::invalidUIElement;
}

bool WindowManager::iconify(const std::vector<WindowKey>& windows, Deadline deadline) {
  for (const auto& window : windows)
    server_.connection().sendToWindowManager(window.window, server_.atoms().wmChangeState,
                                             {iconicState, 0, 0, 0, 0});
  return std::ranges::all_of(windows, [&](const WindowKey& window) {
    return waitForIconified(window, true, iconifyPatience, deadline);
  });
}

bool WindowManager::deiconify(const std::vector<WindowKey>& windows, Deadline deadline) {
  for (const auto& window : windows) xcb_map_window(server_.connection().raw(), window.window);
  bool all = true;
  for (const auto& window : windows) {
    if (waitForIconified(window, false, mapPatience, deadline)) continue;
    // A window that stayed mapped inside an unmapped frame hears nothing of being mapped.
    activate(window.window);
    all &= waitForIconified(window, false, iconifyPatience, deadline);
  }
  return all;
}

std::expected<void, AXError> WindowManager::minimize(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return std::unexpected(facts.error());
  if (isMinimized(server_, facts->state, currentDesktop(server_, deadline))) return {};
  if (iconify({window}, deadline)) return {};
  // It must not happen after it was reported as failed.
  xcb_map_window(server_.connection().raw(), window.window);
  server_.connection().flush();
  return std::unexpected(AXError::cannotComplete);
}

std::expected<void, AXError> WindowManager::unminimize(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return std::unexpected(facts.error());
  if (!isMinimized(server_, facts->state, currentDesktop(server_, deadline))) return {};
  bringToCurrentDesktop(*facts, deadline);
  if (!deiconify({window}, deadline)) return std::unexpected(AXError::cannotComplete);
  return {};
}

void WindowManager::bringToCurrentDesktop(const WindowFacts& window, Deadline deadline) {
  const auto desktop = currentDesktop(server_, deadline);
  const auto own = window.state.desktop.value_or(desktop);
  if (own == desktop || own == WindowFacts::allDesktops) return;
  server_.connection().sendToWindowManager(window.window, server_.atoms().netWMDesktop,
                                           {desktop, sourcePager, 0, 0, 0});
}

std::expected<void, AXError> WindowManager::raise(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return std::unexpected(facts.error());
  bringToCurrentDesktop(*facts, deadline);
  auto& connection = server_.connection();
  if (server_.windowManagerSupports(server_.atoms().netRestackWindow)) {
    connection.sendToWindowManager(window.window, server_.atoms().netRestackWindow,
                                   {sourcePager, XCB_WINDOW_NONE, XCB_STACK_MODE_ABOVE, 0, 0});
  } else {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection.raw(), window.window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
  }
  connection.flush();
  return {};
}

void WindowManager::activate(xcb_window_t window) {
  auto& connection = server_.connection();
  connection.sendToWindowManager(window, server_.atoms().netActiveWindow,
                                 {sourcePager, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0});
  connection.flush();
}

}  // namespace pellow
