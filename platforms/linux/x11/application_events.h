#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>

#include "base/handler_list.h"
#include "platforms/linux/x11/active_window.h"
#include "platforms/linux/x11/window_events.h"
#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// Hears of what happens to the windows of single applications. Main thread.
class ApplicationEvents {
 public:
  using Handler = std::function<void(const WindowKey&)>;

  ApplicationEvents(X11Server& server, WindowEvents& windowEvents, ActiveWindow& activeWindow);

  // Hears of each window but dialogs that is minimized from now on, by anybody; and at once of
  // those that have been since they were not among `before`, if that is given. Only window managers
  // that set _NET_WM_STATE_HIDDEN say so: with others a window that goes with its desktop looks the
  // same.
  using Minimized = std::set<xcb_window_t>;
  Subscription onMinimized(ProcessID pid, Handler handler,
                           const std::optional<Minimized>& before = std::nullopt);

  // Hears of each window of the application that gets the keys.
  Subscription onFocused(ProcessID pid, Handler handler);

  // The list of clients has changed.
  void windowsChanged();

 private:
  struct Application {
    HandlerList<void(const WindowKey&)> minimized;
    HandlerList<void(const WindowKey&)> focused;
  };
  struct Watched {
    ProcessID pid = 0;
    WindowKey window;
    bool isMinimized = false;
    Subscription changes;
  };

  void watch(xcb_window_t window, ProcessID pid);
  void windowChanged(xcb_window_t window);
  bool tellsOfMinimizing() const;
  bool isDesktopShown() const;
  void focusChanged(const ActiveWindow::Change& change);

  X11Server& server_;
  WindowEvents& windowEvents_;
  std::map<ProcessID, Application> applications_;
  std::map<xcb_window_t, Watched> watched_;  // of applications whose minimizing is of interest
  Subscription focusWatch_;
};

}  // namespace pellow
