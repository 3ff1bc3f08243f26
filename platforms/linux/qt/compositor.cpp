#include "platforms/linux/qt/compositor.h"

#include <xcb/xfixes.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>

#include "platforms/linux/qt/qt_display.h"

namespace pellow {

Compositor::Compositor() : connection_(qtConnection()) {
  selection_ = internAtom(connection_, "_NET_WM_CM_S0");
  const auto* const fixes = xcb_get_extension_data(connection_, &xcb_xfixes_id);
  if (fixes && fixes->present) {
    ownerChanged_ = fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    xcb_xfixes_select_selection_input(connection_, rootWindow(connection_), selection_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
  }
  isRunning_ = askServer();
  qApp->installNativeEventFilter(this);
}

Compositor::~Compositor() { qApp->removeNativeEventFilter(this); }

bool Compositor::askServer() const {
  const Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      connection_, xcb_get_selection_owner(connection_, selection_), nullptr));
  return owner && owner->owner != XCB_WINDOW_NONE;
}

bool Compositor::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
  const auto* const event = static_cast<const xcb_generic_event_t*>(message);
  if ((event->response_type & 0x7F) != ownerChanged_) return false;
  const auto* const change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t*>(event);
  if (change->selection != selection_) return false;
  const bool runs = change->owner != XCB_WINDOW_NONE;
  if (std::exchange(isRunning_, runs) != runs && observer_) observer_();
  return false;
}

}  // namespace pellow
