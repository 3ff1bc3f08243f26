#include "platforms/linux/x11/grabs.h"

#include <xcb/xinput.h>

#include <algorithm>

namespace pellow {

namespace {

constexpr xcb_input_device_id_t coreKeyboard = 3;  // in every X server

// The connection answers to XInput only after it has said hello.
bool findXInput(X11Connection& connection) {
  const auto* extension = xcb_get_extension_data(connection.raw(), &xcb_input_id);
  if (!extension || !extension->present) return false;
  xcb_discard_reply(connection.raw(), xcb_input_xi_query_version(connection.raw(), 2, 2).sequence);
  return true;
}

xcb_window_t makeWindow(X11Connection& connection) {
  const auto window = xcb_generate_id(connection.raw());
  xcb_create_window(connection.raw(), XCB_COPY_FROM_PARENT, window, connection.root(), -1, -1, 1, 1,
                    0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  return window;
}

}  // namespace

Grabs::Grabs(X11Server& server)
    : server_(server),
      neverMapped_(makeWindow(server.connection())),
      hasXInput_(findXInput(server.connection())) {}

bool Grabs::isReserved(std::uint8_t keycode, const std::vector<unsigned>& modifiers) const {
  return isReserved(keycode, modifiers, server_.patience());
}

bool Grabs::hideKey(std::uint8_t keycode, unsigned modifiers) const {
  const Deadline deadline = server_.patience();
  const auto [keyboard, pointer] = taken(deadline);
  if (!keyboard || pointer) return keyboard;
  return !isReserved(keycode, {modifiers}, deadline) && !isOtherHeldKeyReserved(keycode, deadline);
}

bool Grabs::hideEverything() const {
  const auto [keyboard, pointer] = taken(server_.patience());
  return keyboard && pointer;
}

// Nothing can be grabbed for a window that is not shown, but the server says first that it has been
// grabbed already.
Grabs::Taken Grabs::taken(Deadline deadline) const {
  auto& connection = server_.connection();
  auto* const raw = connection.raw();
  auto pendingKeyboard = connection.pending<xcb_grab_keyboard_reply_t>(xcb_grab_keyboard(
      raw, 0, neverMapped_, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
  auto pendingPointer = connection.pending<xcb_grab_pointer_reply_t>(
      xcb_grab_pointer(raw, 0, neverMapped_, 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE,
                       XCB_NONE, XCB_CURRENT_TIME));
  const auto keyboard = pendingKeyboard.collect(deadline);
  const auto pointer = pendingPointer.collect(deadline);
  return {.keyboard = keyboard && (*keyboard)->status == XCB_GRAB_STATUS_ALREADY_GRABBED,
          .pointer = pointer && (*pointer)->status == XCB_GRAB_STATUS_ALREADY_GRABBED};
}

// Some desktops reserve a modifier alone, to open a menu with it.
bool Grabs::isOtherHeldKeyReserved(std::uint8_t than, Deadline deadline) const {
  auto& connection = server_.connection();
  auto pending = connection.pending<xcb_query_keymap_reply_t>(xcb_query_keymap(connection.raw()));
  const auto held = pending.collect(deadline);
  for (unsigned keycode = 8; held && keycode <= UINT8_MAX; ++keycode)
    if (keycode != than && (*held)->keys[keycode / 8] >> keycode % 8 & 1 &&
        isReserved(static_cast<std::uint8_t>(keycode), {XCB_MOD_MASK_ANY}, deadline))
      return true;
  return false;
}

// Those of one kind do not keep out those of the other.
bool Grabs::isReserved(std::uint8_t keycode, const std::vector<unsigned>& modifiers,
                       Deadline deadline) const {
  return isReservedByCore(keycode, modifiers, deadline) ||
         isReservedByXInput(keycode, modifiers, deadline);
}

// A press that comes between grab and release freezes the keyboard, and goes its way again with the
// last request.
bool Grabs::isReservedByCore(std::uint8_t keycode, const std::vector<unsigned>& modifiers,
                             Deadline deadline) const {
  auto& connection = server_.connection();
  auto* const raw = connection.raw();
  std::vector<xcb_void_cookie_t> attempts;
  for (const auto each : modifiers) {
    const auto mask = static_cast<std::uint16_t>(each);
    attempts.push_back(xcb_grab_key_checked(raw, 0, connection.root(), mask, keycode,
                                            XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_SYNC));
    xcb_ungrab_key(raw, keycode, connection.root(), mask);
  }
  xcb_allow_events(raw, XCB_ALLOW_REPLAY_KEYBOARD, XCB_CURRENT_TIME);
  bool isRefused = false;
  for (const auto& attempt : attempts) {
    const auto grabbed = connection.check(attempt, deadline);
    isRefused |= !grabbed && grabbed.error() == AXError::failure;
  }
  return isRefused;
}

bool Grabs::isReservedByXInput(std::uint8_t keycode, const std::vector<unsigned>& modifiers,
                               Deadline deadline) const {
  if (!hasXInput_) return false;
  auto& connection = server_.connection();
  auto* const raw = connection.raw();
  std::vector<std::uint32_t> masks(modifiers.begin(), modifiers.end());
  std::ranges::replace(masks, std::uint32_t{XCB_MOD_MASK_ANY},
                       std::uint32_t{XCB_INPUT_MODIFIER_MASK_ANY});
  const auto count = static_cast<std::uint16_t>(masks.size());
  const std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
  auto pending =
      connection.pending<xcb_input_xi_passive_grab_device_reply_t>(xcb_input_xi_passive_grab_device(
          raw, XCB_CURRENT_TIME, connection.root(), XCB_NONE, keycode, coreKeyboard, count, 1,
          XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_SYNC, XCB_GRAB_MODE_ASYNC,
          XCB_INPUT_GRAB_OWNER_NO_OWNER, &events, masks.data()));
  xcb_input_xi_passive_ungrab_device(raw, connection.root(), keycode, coreKeyboard, count,
                                     XCB_INPUT_GRAB_TYPE_KEYCODE, masks.data());
  xcb_input_xi_allow_events(raw, XCB_CURRENT_TIME, coreKeyboard, XCB_INPUT_EVENT_MODE_REPLAY_DEVICE,
                            0, XCB_NONE);
  const auto refused = pending.collect(deadline);
  return refused && (*refused)->num_modifiers > 0;
}

}  // namespace pellow
