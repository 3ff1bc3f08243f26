#include "platforms/linux/x11/window_manager.h"

#include <algorithm>
#include <array>
#include <memory>

#include "base/subscription.h"

namespace pellow {

// What _PELLOW_STATE holds: which states the window has left, whether it was put away and whether
// it has arrived there, and, once known, where the window's frame stood without these states and
// where it was put.
struct WindowManager::LeftState {
  static constexpr std::uint32_t horizontal = 1;
  static constexpr std::uint32_t vertical = 2;
  static constexpr std::uint32_t fullScreen = 4;
  static constexpr std::uint32_t shaded = 8;
  static constexpr std::uint32_t shadedUntilIconified = 16;
  static constexpr std::uint32_t putAway = WindowFacts::putAway;
  static constexpr std::uint32_t onItsWay = 64;

  std::uint32_t states = 0;
  std::optional<PixelPoint> origin;
  std::optional<PixelPoint> parkedPlace;  // only beside an origin

  bool operator==(const LeftState&) const = default;

  static LeftState of(const WindowFacts::State& state) {
    return {(state.maximizedHorizontally ? horizontal : 0) |
            (state.maximizedVertically ? vertical : 0) | (state.fullScreen ? fullScreen : 0) |
            (state.shaded ? shaded : 0)};
  }
  // Whether it is one in which a window does not move, or not well.
  bool isFixed() const { return states & (horizontal | vertical | fullScreen | shaded); }

  static LeftState remembered(const std::vector<std::uint32_t>& words) {
    LeftState left;
    if (!words.empty()) left.states = words[0];
    const auto point = [&](std::size_t index) {
      return PixelPoint{static_cast<int>(words[index]), static_cast<int>(words[index + 1])};
    };
    if (words.size() >= 3) left.origin = point(1);
    if (words.size() >= 5) left.parkedPlace = point(3);
    return left;
  }
  std::vector<std::uint32_t> words() const {
    std::vector<std::uint32_t> result{states};
    const auto append = [&](PixelPoint point) {
      result.push_back(static_cast<std::uint32_t>(point.x));
      result.push_back(static_cast<std::uint32_t>(point.y));
    };
    if (origin) append(*origin);
    if (origin && parkedPlace) append(*parkedPlace);
    return result;
  }
};

namespace {

// How long a window manager may take for one step.
constexpr Seconds promptPatience = 0.02;
constexpr Seconds movePatience = 0.25;
constexpr Seconds settlePatience = 0.1;
constexpr Seconds mapPatience = 0.1;
constexpr Seconds iconifyPatience = 1;
constexpr Seconds activatePatience = 1;
constexpr Seconds catchUpPatience = 5;
constexpr Seconds arrangePatience = 1;  // metacity arranges windows when it has nothing else to do

constexpr std::uint32_t sourcePager = 2;  // "the user wants this", as EWMH has it
constexpr std::uint32_t iconicState = 3;

constexpr Facet placeFacets = Facet::state | Facet::frame;

}  // namespace

// A question that the window manager answers after everything it was asked before. Both are about a
// window that is never shown.
class WindowManager::Question {
 public:
  // How large its frame would be. That costs the window manager a good deal of work, and not all
  // answer.
  static std::unique_ptr<Question> aboutFrame(X11Server& server) {
    std::unique_ptr<Question> question(new Question(server.connection()));
    server.connection().sendToWindowManager(question->window_,
                                            server.atoms().netRequestFrameExtents, {});
    return question;
  }
  // Whether it may grow. The server redirects that to the window manager, which must grant it to
  // windows it does not manage (ICCCM); so all answer.
  static std::unique_ptr<Question> aboutSize(X11Server& server) {
    std::unique_ptr<Question> question(new Question(server.connection()));
    const std::uint32_t width = 2;
    xcb_configure_window(server.connection().raw(), question->window_, XCB_CONFIG_WINDOW_WIDTH,
                         &width);
    server.connection().flush();
    return question;
  }

  Question(const Question&) = delete;
  Question& operator=(const Question&) = delete;
  ~Question() { xcb_destroy_window(connection_.raw(), window_); }

  bool isAnsweredBy(const xcb_generic_event_t& event) const {
    switch (event.response_type & 0x7f) {
      case XCB_PROPERTY_NOTIFY:
        return reinterpret_cast<const xcb_property_notify_event_t&>(event).window == window_;
      case XCB_CONFIGURE_NOTIFY:
        return reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == window_;
      default:
        return false;
    }
  }

 private:
  explicit Question(X11Connection& connection)
      : connection_(connection), window_(xcb_generate_id(connection.raw())) {
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_create_window(connection_.raw(), XCB_COPY_FROM_PARENT, window_, connection_.root(), 0, 0, 1,
                      1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &mask);
  }

  X11Connection& connection_;
  xcb_window_t window_;
};

// Hears of everything that happens to a window, but only while somebody waits for it: a connection
// that always listened would always have to be read.
class WindowManager::Watch {
 public:
  Watch(X11Server& server, xcb_window_t window)
      : connection_(server.connection()), window_(window) {
    const auto parent = server.lastParent(window);
    if (parent != connection_.root()) frame_ = parent;
    connection_.dropEvents();
    select(window_, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
    // Not the children of the root: the server would visit every window on the screen.
    if (frame_) select(frame_, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
  }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch() {
    select(window_, XCB_EVENT_MASK_NO_EVENT);
    if (frame_) select(frame_, XCB_EVENT_MASK_NO_EVENT);
    question_.reset();
    connection_.flush();
    connection_.dropEvents();
  }

  void ask(std::unique_ptr<Question> question) { question_ = std::move(question); }
  bool isAnswered() const { return isAnswered_; }

  // Waits for the next changes; false when none come.
  bool wait(Deadline deadline) {
    while (auto event = connection_.waitForEvent(deadline)) {
      bool isChange = false;
      for (; event; event = connection_.pollForEvent()) isChange |= take(*event);
      if (isChange) return true;
    }
    return false;
  }

 private:
  void select(xcb_window_t window, std::uint32_t mask) {
    xcb_change_window_attributes(connection_.raw(), window, XCB_CW_EVENT_MASK, &mask);
  }

  // Whether it may tell of a change of the window.
  bool take(const xcb_generic_event_t& event) {
    const auto type = event.response_type & 0x7f;
    if (question_ && question_->isAnsweredBy(event)) return isAnswered_ = true;
    // The window is gone, or something of it has changed.
    if (type == 0 || type == XCB_PROPERTY_NOTIFY) return true;
    // All structure events begin alike.
    const auto& structure = reinterpret_cast<const xcb_unmap_notify_event_t&>(event);
    return structure.window == window_ || structure.window == frame_;
  }

  X11Connection& connection_;
  xcb_window_t window_;
  xcb_window_t frame_ = XCB_WINDOW_NONE;
  std::unique_ptr<Question> question_;
  bool isAnswered_ = false;
};

std::expected<WindowFacts, AXError> WindowManager::waitUntil(const WindowKey& window, Facet facets,
                                                             Seconds patience, Deadline deadline,
                                                             const Condition& condition) {
  // The caller's requests are on their way; selecting events follows them, and the first look
  // follows that, so nothing is missed.
  Watch watch(server_, window.window);
  std::optional<Deadline> end;
  for (;;) {
    auto facts = look(server_, window, facets, deadline);
    if (!facts || condition(*facts)) return facts;
    if (!end) end = std::min(deadlineIn(patience), deadline);
    if (!watch.wait(*end)) return facts;
  }
}

// While the window moves, nobody puts it back where it was parked.
std::expected<void, AXError> WindowManager::moveFrame(const WindowKey& window, QuartzPoint origin,
                                                      Deadline deadline) {
  const auto before = exchangeParked(window, std::nullopt);
  const auto parked = changePlace(window, server_.layout().toPixels(origin), deadline);
  server_.connection().flush();
  exchangeParked(window, parked ? *parked : before);
  if (!parked) return std::unexpected(parked.error());
  // The window manager may have acted just before the window counted as parked.
  if (*parked && !hasPassed((*parked)->lateUntil)) noteParkedMoved(window, deadline);
  return {};
}

std::expected<std::optional<WindowManager::Parked>, AXError> WindowManager::changePlace(
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
    facts = leaveStates(*facts, deadline);
    if (!facts) return std::unexpected(facts.error());
    left = LeftState::remembered(facts->state.leftState);
  } else if (!comes && isShown) {
    left = {};  // somebody else has brought it back since
  }
  if (comes && left.isFixed()) {
    if (const auto back = takeUpStates(*facts, target, deadline); !back)
      return std::unexpected(back.error());
    return std::nullopt;
  }

  left.states |= LeftState::putAway | LeftState::onItsWay;
  if (!left.origin) left.origin = facts->frame.origin();
  left.parkedPlace = target;
  if (!comes && left.words() != facts->state.leftState) remember(*facts, left);
  const auto moved = moveTo(*facts, target, deadline);
  if (!moved) return std::unexpected(moved.error());
  if (!comes) {
    left.states &= ~LeftState::onItsWay;
    remember(*facts, left);
    const auto settled = leavesStates ? deadlineIn(arrangePatience) : Deadline();
    return Parked{target, moved->isManagerLate ? Deadline::max() : settled};
  }
  if (!facts->state.leftState.empty()) remember(*facts, {});
  return std::nullopt;
}

// What the dead Pellow asked for happens before anybody looks, and before windows of this process
// may get the numbers of its windows.
void WindowManager::catchUp() {
  auto& connection = server_.connection();
  connection.dropEvents();
  const auto question = Question::aboutSize(server_);
  const Deadline deadline = deadlineIn(catchUpPatience);
  while (const auto event = connection.waitForEvent(deadline))
    if (question->isAnsweredBy(*event)) break;
}

void WindowManager::finishInterruptedMoves() {
  catchUp();
  const Deadline deadline = deadlineIn(serverPatience);
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
      if (isOnItsWay && left.origin) askForMove(window, *left.origin);
      if ((left.states & ~LeftState::onItsWay) == LeftState::putAway) remember(window, {});
      if (!left.isFixed() || LeftState::of(window.state).isFixed() || !isInterrupted) continue;
      changeStates(window, left, true);
      remember(window, {});
    } else if (isPutAway && left.parkedPlace && *left.parkedPlace != window.frame.origin() &&
               !layout.showsMostOf(window.frame.at(*left.parkedPlace))) {
      // The window manager allowed part of the way, and the rest was never made.
      (void)pushFrame(window, *left.parkedPlace, deadline);
    }
  }
  server_.connection().flush();
}

std::vector<WindowManager::ParkedWindow> WindowManager::parkedWindows() const {
  const std::lock_guard lock(parkedMutex_);
  std::vector<ParkedWindow> windows;
  for (const auto& [window, parked] : parked_)
    windows.push_back({{window, parked.id}, !hasPassed(parked.lateUntil)});
  return windows;
}

std::optional<WindowManager::Parked> WindowManager::exchangeParked(const WindowKey& window,
                                                                   std::optional<Parked> parked) {
  const std::lock_guard lock(parkedMutex_);
  const auto known = parked_.extract(window.window);
  if (parked) {
    parked->id = window.id;
    parked_[window.window] = *parked;
  }
  return known && known.mapped().id == window.id ? std::optional(known.mapped()) : std::nullopt;
}

void WindowManager::parkAgain(const WindowKey& window, Deadline deadline) {
  // Held to the end, so that a move back on another thread comes after this one.
  const std::lock_guard lock(parkedMutex_);
  const auto parked = parked_.find(window.window);
  if (parked == parked_.end() || parked->second.id != window.id) return;
  const auto facts = look(server_, window, placeFacets, deadline);
  if (!facts) {
    if (facts.error() == AXError::invalidUIElement) parked_.erase(parked);
    return;
  }
  const auto place = parked->second.place;
  if (facts->frame.origin() == place || server_.layout().showsMostOf(facts->frame.at(place)))
    return;
  if (!std::exchange(parked->second.isAskedAgain, true)) askForMove(*facts, place);
  (void)pushFrame(*facts, place, deadline);
  server_.connection().flush();
}

void WindowManager::noteParkedMoved(const WindowKey& window, Deadline deadline) {
  const std::lock_guard lock(parkedMutex_);
  const auto parked = parked_.find(window.window);
  if (parked == parked_.end() || parked->second.id != window.id) return;
  const auto facts = look(server_, window, placeFacets, deadline);
  if (!facts) return;
  const auto place = parked->second.place;
  auto& lateUntil = parked->second.lateUntil;
  if (!hasPassed(lateUntil) && facts->frame.origin() != place) {
    lateUntil = std::min(lateUntil, deadlineIn(arrangePatience));
    (void)pushFrame(*facts, place, deadline);
    return server_.connection().flush();
  }
  const bool isBack = server_.layout().showsMostOf(facts->frame);
  if (!isBack || !server_.isWindowManagerSettled(deadline)) return;
  parked_.erase(parked);
  if (LeftState::remembered(facts->state.leftState).states != LeftState::putAway) return;
  remember(*facts, {});
  server_.connection().flush();
}

// The place of the outer corner: window managers agree best on this gravity. The size is there
// because without it fluxbox makes a window grow by its title bar.
void WindowManager::askForMove(const WindowFacts& window, PixelPoint target) {
  constexpr std::uint32_t gravity = XCB_GRAVITY_NORTH_WEST;
  constexpr std::uint32_t hasPlaceAndSize = 0xfu << 8;
  const int x = window.outerCorner.x + target.x - window.frame.x;
  const int y = window.outerCorner.y + target.y - window.frame.y;
  server_.connection().sendToWindowManager(
      window.window, server_.atoms().netMoveResizeWindow,
      {gravity | hasPlaceAndSize | sourcePager << 12, static_cast<std::uint32_t>(x),
       static_cast<std::uint32_t>(y), static_cast<std::uint32_t>(window.content.width),
       static_cast<std::uint32_t>(window.content.height)});
}

std::expected<WindowManager::Moved, AXError> WindowManager::moveTo(const WindowFacts& window,
                                                                   PixelPoint target,
                                                                   Deadline deadline) {
  auto moved = lookAfterMove(window, target, deadline);
  if (!moved || moved->facts.frame.origin() == target) return moved;

  auto& facts = moved->facts;
  const auto layout = server_.layout();
  const bool leaves = !layout.showsMostOf(facts.frame.at(target));
  const bool isAway = !layout.showsMostOf(facts.frame);
  if (!leaves && !isAway) return moved;
  if (const auto pushed = pushFrame(facts, target, deadline); !pushed)
    return std::unexpected(pushed.error());
  const int dx = target.x - facts.frame.x;
  const int dy = target.y - facts.frame.y;
  facts.content = facts.content.at({facts.content.x + dx, facts.content.y + dy});
  facts.outerCorner = {facts.outerCorner.x + dx, facts.outerCorner.y + dy};
  facts.frame = facts.frame.at(target);
  return moved;
}

// Most moves are done at once, and the first event tells of them.
std::expected<WindowManager::Moved, AXError> WindowManager::lookAfterMove(const WindowFacts& window,
                                                                          PixelPoint target,
                                                                          Deadline deadline) {
  Watch watch(server_, window.window);
  askForMove(window, target);
  const Deadline prompt = std::min(deadlineIn(promptPatience), deadline);
  const auto hasMoved = [&](const WindowFacts& now) {
    return now.frame.origin() != window.frame.origin();
  };
  while (watch.wait(prompt)) {
    auto facts = look(server_, window.key(), placeFacets, deadline);
    if (!facts) return std::unexpected(facts.error());
    // Wherever it went, that is as far as the window manager lets it.
    if (hasMoved(*facts)) return Moved{std::move(*facts)};
  }
  auto facts = lookAfterItActed(watch, window.key(), deadline, [&](const WindowFacts& now) {
    return now.frame.origin() == target;
  });
  if (!facts) return std::unexpected(facts.error());
  const bool isManagerLate = !watch.isAnswered() && !hasMoved(*facts);
  return Moved{std::move(*facts), isManagerLate};
}

std::expected<WindowFacts, AXError> WindowManager::lookAfterItActed(Watch& watch,
                                                                    const WindowKey& window,
                                                                    Deadline deadline,
                                                                    const Condition& isDone) {
  if (server_.windowManagerSupports(server_.atoms().netRequestFrameExtents))
    watch.ask(Question::aboutFrame(server_));
  // Its time starts when it has the request: the server may keep everybody waiting.
  std::optional<Deadline> end;
  for (;;) {
    const bool isAnswered = watch.isAnswered();
    auto facts = look(server_, window, placeFacets, deadline);
    if (!facts || isAnswered || isDone(*facts)) return facts;
    if (!end) end = std::min(deadlineIn(movePatience), deadline);
    if (!watch.wait(*end)) return facts;
  }
}

// Window managers keep part of a window on the screen, some of them a large one. So the frame, or
// the client itself where it has none, is moved past them: the server redirects to the window
// manager only what is done to windows without this flag. The window manager believes the window to
// be where it allowed it, and brings it back from there like any other.
std::expected<void, AXError> WindowManager::pushFrame(const WindowFacts& window, PixelPoint target,
                                                      Deadline deadline) {
  const bool isFramed = window.parent != server_.connection().root();
  const auto frameWindow =
      isFramed ? outermostWindow(server_, window.parent, deadline) : window.window;
  if (!frameWindow) return std::unexpected(frameWindow.error());
  auto& connection = server_.connection();
  // A late window manager may move the window right now; nothing may come between the look and the
  // move.
  xcb_grab_server(connection.raw());
  const Subscription release([&] {
    xcb_ungrab_server(connection.raw());
    connection.flush();
  });
  auto pending = connection.pending<xcb_get_geometry_reply_t>(
      xcb_get_geometry(connection.raw(), *frameWindow));
  const auto now = WindowLook(server_, connection, window.window, Facet::frame).collect(deadline);
  if (!now) return std::unexpected(now.error());
  // Another window manager has framed it meanwhile, or none does any more: its former outermost
  // window may now be inside a frame.
  if (now->parent != window.parent) return pushFrame(*now, target, deadline);
  const auto geometry = pending.collect(deadline);
  if (!geometry) return std::unexpected(geometry.error());
  if (now->frame.origin() == target) return {};

  const std::array<std::int32_t, 2> place{(*geometry)->x + target.x - now->frame.x,
                                          (*geometry)->y + target.y - now->frame.y};
  const auto setBypass = [&](std::uint32_t bypass) {
    xcb_change_window_attributes(connection.raw(), *frameWindow, XCB_CW_OVERRIDE_REDIRECT, &bypass);
  };
  setBypass(1);
  xcb_configure_window(connection.raw(), *frameWindow, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
                       place.data());
  setBypass(0);
  return {};
}

// Full screen is left first and taken up last: the states it covers are kept below it.
void WindowManager::changeStates(const WindowFacts& window, const LeftState& states, bool add) {
  const auto& atoms = server_.atoms();
  const auto change = [&](xcb_atom_t first, xcb_atom_t second) {
    server_.connection().sendToWindowManager(window.window, atoms.netWMState,
                                             {add ? 1u : 0u, first, second, sourcePager, 0});
  };
  const bool horizontal = states.states & LeftState::horizontal;
  const bool vertical = states.states & LeftState::vertical;
  const bool fullScreen = states.states & LeftState::fullScreen;
  const bool shaded = states.states & LeftState::shaded;
  if (shaded && !add) change(atoms.netWMStateShaded, 0);
  if (fullScreen && !add) change(atoms.netWMStateFullscreen, 0);
  if (horizontal || vertical)
    change(horizontal ? atoms.netWMStateMaximizedHorz : atoms.netWMStateMaximizedVert,
           horizontal && vertical ? atoms.netWMStateMaximizedVert : 0);
  if (fullScreen && add) change(atoms.netWMStateFullscreen, 0);
  if (shaded && add) change(atoms.netWMStateShaded, 0);
}

std::expected<WindowFacts, AXError> WindowManager::leaveStates(const WindowFacts& window,
                                                               Deadline deadline) {
  LeftState left;
  WindowFacts now = window;
  // A window that was maximized before it became full screen may be so again after it.
  for (int step = 0; step < 2 && LeftState::of(now.state).isFixed(); ++step) {
    left.states |= LeftState::of(now.state).states;
    // Remembered first: a crash in between leaves nothing to repair.
    remember(window, left);
    changeStates(now, LeftState::of(now.state), false);
    auto facts = lookAfterStateChange(now, deadline);
    if (!facts) return facts;
    now = std::move(*facts);
  }
  if (LeftState::of(now.state).isFixed()) {
    // If it still does the one, it then does the other too.
    changeStates(window, left, true);
    remember(window, {});
    return std::unexpected(AXError::cannotComplete);
  }
  left.origin = now.frame.origin();
  remember(window, left);
  now.state.leftState = left.words();
  return now;
}

void WindowManager::remember(const WindowFacts& window, const LeftState& left) {
  auto* raw = server_.connection().raw();
  const auto property = server_.atoms().pellowState;
  const auto words = left.words();
  if (left.states != 0)
    xcb_change_property(raw, XCB_PROP_MODE_REPLACE, window.window, property, XCB_ATOM_INTEGER, 32,
                        static_cast<std::uint32_t>(words.size()), words.data());
  else
    xcb_delete_property(raw, window.window, property);
}

// The state changes before the frame does, and some window managers answer in between.
std::expected<WindowFacts, AXError> WindowManager::lookAfterStateChange(const WindowFacts& before,
                                                                        Deadline deadline) {
  const auto hasNewState = [&](const WindowFacts& now) {
    return LeftState::of(now.state) != LeftState::of(before.state);
  };
  auto facts = waitUntil(before.key(), placeFacets, movePatience, deadline, hasNewState);
  if (!facts || !hasNewState(*facts)) return facts;
  {
    Watch watch(server_, before.window);
    const auto never = [](const WindowFacts&) { return false; };
    facts = lookAfterItActed(watch, before.key(), deadline, never);
  }
  if (!facts || facts->state.isExpanded() == before.state.isExpanded()) return facts;
  return waitUntil(before.key(), placeFacets, settlePatience, deadline,
                   [&](const WindowFacts& now) { return now.frame != before.frame; });
}

std::expected<void, AXError> WindowManager::takeUpStates(const WindowFacts& window,
                                                         PixelPoint target, Deadline deadline) {
  const auto left = LeftState::remembered(window.state.leftState);
  const auto layout = server_.layout();
  // Back to where it stood before it was maximized, if that is on the monitor that it comes to.
  const bool sameMonitor = left.origin && layout.showsMostOf(window.frame.at(*left.origin)) &&
                           layout.monitorWithMostOf(window.frame.at(*left.origin)) ==
                               layout.monitorWithMostOf(window.frame.at(target));
  const auto moved = moveTo(window, sameMonitor ? *left.origin : target, deadline);
  if (!moved) return std::unexpected(moved.error());

  changeStates(moved->facts, left, true);
  remember(window, {});
  const auto back = lookAfterStateChange(moved->facts, deadline);
  if (!back) return std::unexpected(back.error());
  return {};
}

bool WindowManager::waitForIconified(const WindowKey& window, bool iconified, Seconds patience,
                                     Deadline deadline) {
  const auto isDone = [&](const WindowFacts& now) {
    return isIconified(server_, now.state, deadline) == iconified;
  };
  const auto facts = waitUntil(window, Facet::state, patience, deadline, isDone);
  return facts ? isDone(*facts) : facts.error() == AXError::invalidUIElement;
}

// Some window managers do not iconify a shaded window, others then forget that it was shaded.
void WindowManager::unshade(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, placeFacets, deadline);
  if (!facts) return;
  auto left = LeftState::remembered(facts->state.leftState);
  const auto before = left;
  left.states &= ~LeftState::shadedUntilIconified;
  if (facts->state.shaded) left.states |= LeftState::shadedUntilIconified;
  if (left != before) remember(*facts, left);
  if (!facts->state.shaded) return;
  changeStates(*facts, {LeftState::shaded}, false);
  (void)lookAfterStateChange(*facts, deadline);
}

void WindowManager::shadeAgain(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return;
  auto left = LeftState::remembered(facts->state.leftState);
  if (!(left.states & LeftState::shadedUntilIconified)) return;
  changeStates(*facts, {LeftState::shaded}, true);
  left.states &= ~LeftState::shadedUntilIconified;
  remember(*facts, left);
  server_.connection().flush();
}

bool WindowManager::iconify(const std::vector<WindowKey>& windows, Deadline deadline) {
  for (const auto& window : windows) unshade(window, deadline);
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
  for (const auto& window : windows) shadeAgain(window, deadline);
  return all;
}

std::expected<void, AXError> WindowManager::minimize(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return std::unexpected(facts.error());
  if (isMinimized(server_, facts->state, deadline)) return {};
  if (iconify({window}, deadline)) return {};
  // Undoes what has happened by now; the window's observers hear of what happens later.
  xcb_map_window(server_.connection().raw(), window.window);
  server_.connection().flush();
  return std::unexpected(AXError::cannotComplete);
}

std::expected<void, AXError> WindowManager::unminimize(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return std::unexpected(facts.error());
  if (!isMinimized(server_, facts->state, deadline)) return {};
  bringToCurrentDesktop(*facts, deadline);
  if (!deiconify({window}, deadline)) return std::unexpected(AXError::cannotComplete);
  return {};
}

void WindowManager::bringToCurrentDesktop(const WindowFacts& window, Deadline deadline) {
  const auto desktop = currentDesktop(server_, deadline);
  if (window.state.isOn(desktop)) return;
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
  const auto facts =
      WindowLook(server_, connection, window, Facet::state).collect(deadlineIn(activatePatience));
  connection.sendToWindowManager(window, server_.atoms().netActiveWindow,
                                 {sourcePager, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0});
  // Many window managers unshade what they activate.
  if (facts && facts->state.shaded) changeStates(*facts, {LeftState::shaded}, true);
  connection.flush();
}

}  // namespace pellow
