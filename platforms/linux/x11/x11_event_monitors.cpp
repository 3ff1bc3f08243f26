#include "platforms/linux/x11/x11_event_monitors.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <xcb/xinput.h>

#include "platforms/linux/x11/client_processes.h"
#include "platforms/linux/x11/xcb_xkb.h"

namespace pellow {

namespace {

constexpr long gatheringTime = 50'000'000;  // nanoseconds
constexpr xcb_xkb_device_spec_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;

std::optional<std::uint8_t> findInputExtension(X11Connection& connection) {
  const auto* extension = xcb_get_extension_data(connection.raw(), &xcb_input_id);
  if (!extension || !extension->present) return std::nullopt;
  // From 2.1 on raw events come even while another client has grabbed the keyboard.
  auto pending = connection.pending<xcb_input_xi_query_version_reply_t>(
      xcb_input_xi_query_version(connection.raw(), 2, 2));
  const auto version = pending.collect(deadlineIn(longServerPatience));
  if (!version || (*version)->major_version < 2) return std::nullopt;
  return extension->major_opcode;
}

std::optional<std::uint8_t> findKeyboardExtension(X11Connection& connection) {
  const auto* extension = xcb_get_extension_data(connection.raw(), &xcb_xkb_id);
  if (!extension || !extension->present) return std::nullopt;
  auto pending = connection.pending<xcb_xkb_use_extension_reply_t>(
      xcb_xkb_use_extension(connection.raw(), 1, 0));
  const auto use = pending.collect(deadlineIn(longServerPatience));
  if (!use || !(*use)->supported) return std::nullopt;
  return extension->first_event;
}

void selectKeyboardEvents(X11Connection& connection) {
  constexpr std::uint16_t states =
      XCB_XKB_STATE_PART_MODIFIER_STATE | XCB_XKB_STATE_PART_GROUP_STATE;
  constexpr std::uint16_t mapParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                                     XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_KEY_ACTIONS;
  xcb_xkb_select_events_details_t details{};
  details.affectState = states;
  details.stateDetails = states;
  xcb_xkb_select_events_aux(connection.raw(), coreKeyboard,
                            XCB_XKB_EVENT_TYPE_STATE_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY,
                            0, XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY, mapParts, mapParts,
                            &details);
  connection.flush();
}

}  // namespace

X11EventMonitors::X11EventMonitors(X11Server& server, X11Connection& events, Keyboard& keyboard,
                                   const Grabs& grabs, int pollSet,
                                   OwnWindowHasKeyboard ownWindowHasKeyboard)
    : server_(server),
      events_(events),
      keyboard_(keyboard),
      grabs_(grabs),
      ownWindowHasKeyboard_(std::move(ownWindowHasKeyboard)),
      inputOpcode_(findInputExtension(events)),
      xkbEvent_(findKeyboardExtension(events)),
      movementTimer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {
  epoll_event interest{.events = EPOLLIN, .data = {.fd = movementTimer_.number()}};
  epoll_ctl(pollSet, EPOLL_CTL_ADD, movementTimer_.number(), &interest);
  // XKB answers the requests of the calling connection only after it has said hello.
  findKeyboardExtension(server_.connection());
  if (xkbEvent_) selectKeyboardEvents(events_);
}

std::optional<Subscription> X11EventMonitors::addGlobalKeyDown(
    std::function<void(const KeyEvent&)> handler) {
  if (!inputOpcode_ || !xkbEvent_ || events_.isLost()) return std::nullopt;
  const bool isFirst = global_.isEmpty();
  auto subscription = global_.add(std::move(handler));
  if (isFirst) {
    down_.reset();
    keyboard_.map();
    readModifiers();
  }
  if (!listen()) return std::nullopt;
  return subscription;
}

std::optional<Subscription> X11EventMonitors::addLocalKeyDown(
    std::function<bool(const KeyEvent&)> handler) {
  return local_.add(std::move(handler));
}

std::optional<Subscription> X11EventMonitors::addGlobalPointerMoved(std::function<void()> handler) {
  if (!inputOpcode_ || events_.isLost()) return std::nullopt;
  auto subscription = globalMoved_.add(std::move(handler));
  if (!listen()) return std::nullopt;
  return subscription;
}

std::optional<Subscription> X11EventMonitors::addLocalPointerMoved(std::function<void()> handler) {
  if (!inputOpcode_ || events_.isLost()) return std::nullopt;
  auto subscription = localMoved_.add(std::move(handler));
  if (!listen()) return std::nullopt;
  return subscription;
}

std::optional<Subscription> X11EventMonitors::addGlobalMouseDown(std::function<void()> handler) {
  if (!inputOpcode_ || events_.isLost()) return std::nullopt;
  auto subscription = globalMouseDown_.add(std::move(handler));
  if (!listen()) return std::nullopt;
  return subscription;
}

bool X11EventMonitors::listen() {
  const bool keys = !global_.isEmpty();
  const bool movements =
      !areMovementsGathered_ && !(globalMoved_.isEmpty() && localMoved_.isEmpty());
  const bool buttons = !globalMouseDown_.isEmpty();
  struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } selection{
      {XCB_INPUT_DEVICE_ALL_MASTER, 1},
      (keys ? XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE
            : 0u) |
          (movements ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_MOTION} : 0) |
          (buttons ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS} : 0)};
  const auto cookie =
      xcb_input_xi_select_events_checked(events_.raw(), events_.root(), 1, &selection.head);
  const Deadline deadline = server_.patience();
  return events_.check(cookie, deadline).has_value() || deadline.hasMetSilence();
}

void X11EventMonitors::readModifiers() {
  auto& connection = server_.connection();
  auto pending = connection.pending<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(connection.raw(), coreKeyboard));
  const auto state = pending.collect(server_.patience());
  if (!state) return;
  modifiers_ = (*state)->mods;
  group_ = (*state)->group;
}

bool X11EventMonitors::handle(const xcb_generic_event_t& event) {
  const auto type = event.response_type;  // never one that another client has sent
  if (type == XCB_GE_GENERIC) {
    handleRawEvent(event);
    return true;
  }
  if (!xkbEvent_ || type != *xkbEvent_) return false;
  handleKeyboard(event);
  return true;
}

void X11EventMonitors::handleKeyboard(const xcb_generic_event_t& event) {
  switch (event.pad0) {  // where XKB puts the kind of its one event
    case XCB_XKB_STATE_NOTIFY: {
      const auto& state = reinterpret_cast<const xcb_xkb_state_notify_event_t&>(event);
      modifiers_ = state.mods;
      group_ = state.group;
      break;
    }
    case XCB_XKB_MAP_NOTIFY:
    case XCB_XKB_NEW_KEYBOARD_NOTIFY:
      keyboard_.changed();
      break;
    default:
      break;
  }
}

void X11EventMonitors::handleRawEvent(const xcb_generic_event_t& event) {
  const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
  if (generic.extension != inputOpcode_) return;
  const auto& key = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
  if (generic.event_type == XCB_INPUT_RAW_KEY_PRESS) handleRawKey(key.detail, true);
  if (generic.event_type == XCB_INPUT_RAW_KEY_RELEASE) handleRawKey(key.detail, false);
  if (generic.event_type == XCB_INPUT_RAW_MOTION) gatherMovements();
  if (generic.event_type == XCB_INPUT_RAW_BUTTON_PRESS) handleRawButton(key.detail);
}

// The server's own repeats are no raw events, but remote keyboards send theirs as presses.
void X11EventMonitors::handleRawKey(unsigned keycode, bool isPress) {
  if (global_.isEmpty()) {
    listen();  // for what is left to be heard
    return;
  }
  if (keycode >= down_.size()) return;
  const bool wasDown = down_[keycode];
  down_[keycode] = isPress;
  if (isPress && !wasDown)
    presses_.push_back({static_cast<std::uint8_t>(keycode), modifiers_, group_});
}

// A wheel turns by presses of buttons 4 to 7.
void X11EventMonitors::handleRawButton(unsigned button) {
  if (globalMouseDown_.isEmpty()) {
    listen();
    return;
  }
  if (button < 4 || button > 7) areButtonsToBeTold_ = true;
}

void X11EventMonitors::dispatch() {
  tellOfKeys();
  tellOfButtons();
  tellOfMovements();
}

void X11EventMonitors::tellOfKeys() {
  while (!presses_.empty() && server_.answers()) {
    const Deadline deadline = server_.patience();
    const auto press = presses_.front();
    const auto map = keyboard_.map();  // kept for its texts, whatever a handler does
    const auto code = map->keyCode(press.keycode);
    const bool isForOthers = code && isForOtherApplications(press);
    if (deadline.hasMetSilence()) return;
    presses_.pop_front();
    if (!isForOthers) continue;
    global_.notify({.keyCode = *code,
                    .modifierFlags = map->modifierFlags(press.modifiers),
                    .charactersIgnoringModifiers = map->characters(
                        press.keycode, press.group, (press.modifiers & XCB_MOD_MASK_SHIFT) != 0)});
  }
}

bool X11EventMonitors::isForOtherApplications(const Press& press) const {
  auto& connection = server_.connection();
  auto pending =
      connection.pending<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection.raw()));
  const auto focus = pending.collect(server_.patience());
  return focus && !ownWindowHasKeyboard_((*focus)->focus) &&
         !grabs_.hideKey(press.keycode, press.modifiers);
}

void X11EventMonitors::tellOfButtons() {
  if (!areButtonsToBeTold_) return;
  const Deadline deadline = server_.patience();
  const bool isOwn = server_.answers() && isOwnWindowBelowPointer(deadline);
  if (deadline.hasMetSilence()) return;
  areButtonsToBeTold_ = false;
  if (!isOwn) globalMouseDown_.notify();
}

void X11EventMonitors::gatherMovements() {
  if (globalMoved_.isEmpty() && localMoved_.isEmpty()) {
    listen();
    return;
  }
  if (std::exchange(areMovementsGathered_, true)) return;
  listen();
  const itimerspec once{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = gatheringTime}};
  timerfd_settime(movementTimer_.number(), 0, &once, nullptr);
}

void X11EventMonitors::tellOfMovements() {
  std::uint64_t expirations = 0;
  if (read(movementTimer_.number(), &expirations, sizeof expirations) > 0)
    areMovementsToBeTold_ = true;
  if (!areMovementsToBeTold_) return;
  const Deadline deadline = server_.patience();
  // What moves from here on is heard of, and what has moved before is where the pointer is.
  areMovementsGathered_ = false;
  const bool isOwn = server_.answers() && listen() && isOwnWindowBelowPointer(deadline);
  areMovementsGathered_ = deadline.hasMetSilence();
  if (areMovementsGathered_) return;
  areMovementsToBeTold_ = false;
  const auto& handlers = isOwn ? localMoved_ : globalMoved_;
  handlers.notify();
}

bool X11EventMonitors::isOwnWindowBelowPointer(Deadline deadline) const {
  auto& connection = server_.connection();
  auto deepest = connection.root();
  for (auto child = deepest; child != XCB_WINDOW_NONE;) {
    deepest = child;
    auto pending =
        connection.pending<xcb_query_pointer_reply_t>(xcb_query_pointer(connection.raw(), deepest));
    const auto pointer = pending.collect(deadline);
    if (!pointer) return false;
    child = (*pointer)->child;
  }
  return deepest != connection.root() &&
         owningProcesses(server_, {deepest}, deadline).front() == getpid();
}

bool X11EventMonitors::deliverLocalKeyDown(std::uint8_t keycode, std::uint16_t state) {
  constexpr unsigned groupShift = 13;  // where XKB puts the layout in the state of an event
  const auto map = keyboard_.map();    // kept for its texts, whatever a handler does
  const auto code = map->keyCode(keycode);
  if (!code) return true;
  const KeyEvent press{.keyCode = *code,
                       .modifierFlags = map->modifierFlags(state),
                       .charactersIgnoringModifiers = map->characters(
                           keycode, state >> groupShift & 3u, (state & XCB_MOD_MASK_SHIFT) != 0)};
  return local_.newestFirst(press);
}

AppKitPoint X11EventMonitors::pointerLocation() const {
  auto& connection = server_.connection();
  auto pending = connection.pending<xcb_query_pointer_reply_t>(
      xcb_query_pointer(connection.raw(), connection.root()));
  const auto pointer = pending.collect(server_.patience());
  if (pointer) pointer_ = {(*pointer)->root_x, (*pointer)->root_y};
  return server_.layout().toAppKit(pointer_);
}

}  // namespace pellow
