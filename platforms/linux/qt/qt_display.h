#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

// Qt's X11 connection. Requests about the program's own windows go through it, to stay in order
// with Qt's. Main thread, while there is a Qt application.

namespace pellow {

struct FreeReply {
  void operator()(void* reply) const { std::free(reply); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeReply>;

xcb_connection_t* qtConnection();
xcb_window_t rootWindow(xcb_connection_t* connection);
xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name);

}  // namespace pellow
