#pragma once

#include <functional>
#include <map>
#include <set>

#include "base/handler_list.h"
#include "base/subscription.h"
#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// Hears of what becomes of single windows: mapped, unmapped, iconified, destroyed, or given another
// share of the screen. Main thread.
class WindowEvents {
 public:
  // `events` is the connection whose events the desktop hands on.
  WindowEvents(X11Server& server, X11Connection& events) : server_(server), events_(events) {}

  // Calls `changed` after every such change from now on. A look at the window tells what has
  // changed.
  Subscription observe(xcb_window_t window, std::function<void()> changed);

  // Notes an event; the observers hear of it with the next `dispatch`.
  void handle(const xcb_generic_event_t& event);
  // Notes a change of every observed window.
  void noteAll();
  void dispatch();

 private:
  void select(xcb_window_t window);
  void forgetUnobserved();

  X11Server& server_;
  X11Connection& events_;
  std::map<xcb_window_t, HandlerList<void()>> observers_;
  std::set<xcb_window_t> selected_;  // those whose events the server sends
  std::set<xcb_window_t> changed_;
};

}  // namespace pellow
