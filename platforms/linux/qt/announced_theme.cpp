#include "platforms/linux/qt/announced_theme.h"

#include <QCoreApplication>
#include <string_view>
#include <utility>

#include "platforms/linux/qt/qt_display.h"
#include "platforms/linux/x11/settings_announcement.h"

namespace pellow {

AnnouncedTheme::AnnouncedTheme(std::function<void()> onChange)
    : onChange_(std::move(onChange)),
      connection_(qtConnection()),
      manager_(internAtom(connection_, "MANAGER")),
      selection_(internAtom(connection_, "_XSETTINGS_S0")),
      settings_(internAtom(connection_, "_XSETTINGS_SETTINGS")) {
  follow();
  qApp->installNativeEventFilter(this);
}

AnnouncedTheme::~AnnouncedTheme() { qApp->removeNativeEventFilter(this); }

// Qt itself follows only the daemon that runs at its start, on the same connection: it must be told
// what it has asked for.
void AnnouncedTheme::follow() {
  const Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      connection_, xcb_get_selection_owner(connection_, selection_), nullptr));
  daemon_ = owner ? owner->owner : XCB_WINDOW_NONE;
  if (daemon_ == XCB_WINDOW_NONE) return;
  const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
  const auto asked =
      xcb_change_window_attributes_checked(connection_, daemon_, XCB_CW_EVENT_MASK, &events);
  xcb_discard_reply(connection_, asked.sequence);
  read();
}

void AnnouncedTheme::read() {
  constexpr std::uint32_t most = 1 << 16;  // units of four bytes
  const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
      connection_,
      xcb_get_property(connection_, 0, daemon_, settings_, XCB_GET_PROPERTY_TYPE_ANY, 0, most),
      nullptr));
  if (!reply) return;
  const auto* const bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
  const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
  name_ = announcedText({bytes, length}, "Net/ThemeName").value_or("");
}

bool AnnouncedTheme::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
  const auto* const event = static_cast<const xcb_generic_event_t*>(message);
  switch (event->response_type & 0x7F) {
    case XCB_CLIENT_MESSAGE: {
      const auto& told = *reinterpret_cast<const xcb_client_message_event_t*>(event);
      if (told.type != manager_ || told.data.data32[1] != selection_) return false;
      follow();
      break;
    }
    case XCB_PROPERTY_NOTIFY: {
      const auto& change = *reinterpret_cast<const xcb_property_notify_event_t*>(event);
      if (change.window != daemon_ || change.atom != settings_) return false;
      read();
      break;
    }
    default:
      return false;
  }
  onChange_();
  return false;
}

}  // namespace pellow
