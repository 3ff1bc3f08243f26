#include "platforms/linux/x11/keyboard.h"

#include <sys/socket.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace pellow {

// Ends a reading that the server does not answer.
Keyboard::~Keyboard() { shutdown(xcb_get_file_descriptor(connection_->raw()), SHUT_RDWR); }

Keyboard::Map Keyboard::map() {
  const Deadline deadline = server_.patience();
  if (reading_.valid()) collect(deadline);
  if (isOutdated_ && !reading_.valid()) {
    isOutdated_ = false;
    reading_ = std::async(std::launch::async, read, connection_->raw());
    collect(deadline);
  }
  return map_;
}

void Keyboard::collect(Deadline deadline) {
  const auto isThere = [&](auto end) {
    return reading_.wait_until(end) == std::future_status::ready;
  };
  while (!isThere(deadline.hold ? deadline.orIn(ServerHold::patience).end : deadline.end))
    if (!deadline.hold || hasPassed(deadline) || !server_.answers()) return;
  if (auto map = reading_.get())
    map_ = std::move(map);
  else
    isOutdated_ = true;
}

Keyboard::Map Keyboard::read(xcb_connection_t* connection) {
  if (!xkb_x11_setup_xkb_extension(
          connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
          XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr))
    return nullptr;
  constexpr auto onlyFromServer = static_cast<xkb_context_flags>(XKB_CONTEXT_NO_DEFAULT_INCLUDES |
                                                                 XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
  const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
      xkb_context_new(onlyFromServer), xkb_context_unref);
  if (!context) return nullptr;
  xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL);  // it writes to standard error
  const std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> keymap(
      xkb_x11_keymap_new_from_device(context.get(), connection,
                                     xkb_x11_get_core_keyboard_device_id(connection),
                                     XKB_KEYMAP_COMPILE_NO_FLAGS),
      xkb_keymap_unref);
  return keymap ? std::make_shared<const KeyboardMap>(*keymap) : nullptr;
}

}  // namespace pellow
