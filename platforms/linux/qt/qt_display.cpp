#include "platforms/linux/qt/qt_display.h"

#include <QGuiApplication>

namespace pellow {

xcb_connection_t* qtConnection() {
  return qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

// Qt knows only one X screen.
xcb_window_t rootWindow(xcb_connection_t* connection) {
  return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name) {
  const auto cookie =
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : XCB_ATOM_NONE;
}

}  // namespace pellow
