#pragma once

#include <functional>

#include "base/handler_list.h"
#include "platforms/linux/x11/window_events.h"
#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// Hears of the window that gets the keyboard. A window that loses it and gets it back is no news,
// for a window manager's menu does that, unless it was iconified or unmapped in between. Main
// thread.
class ActiveWindow {
 public:
  struct Change {
    WindowFacts window;  // with its identity, its state and its kind
    ProcessID pid = 0;
    bool isOfOtherApplication = false;  // than the one before, or there was none before
  };

  ActiveWindow(X11Server& server, WindowEvents& windowEvents);

  Subscription onChange(std::function<void(const Change&)> observer) {
    return observers_.add(std::move(observer));
  }

  // The window manager may have named another window.
  void refresh();

 private:
  void windowChanged();

  X11Server& server_;
  WindowEvents& windowEvents_;
  WindowKey window_;  // none when the last one has gone away
  ProcessID pid_ = 0;
  Subscription windowWatch_;
  HandlerList<void(const Change&)> observers_;
};

}  // namespace pellow
