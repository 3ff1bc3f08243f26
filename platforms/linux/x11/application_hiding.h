#pragma once

#include <map>
#include <vector>

#include "base/subscription.h"
#include "platforms/linux/x11/iconifier.h"
#include "platforms/linux/x11/window_events.h"

namespace pellow {

// Whether the application is hidden: some of its windows are iconified for that, or it had none to
// iconify and shows none yet. Any thread.
bool isApplicationHidden(X11Server& server, ProcessID pid, Deadline deadline);

// Hides applications by iconifying their windows, each with a mark, and shows them again. Main
// thread.
class ApplicationHiding {
 public:
  // Takes over the applications that a crashed Pellow had hidden.
  ApplicationHiding(X11Server& server, Iconifier& iconifier, WindowEvents& windowEvents);

  // As `Workspace` has it. Half done when the server falls silent: then to be called once more.
  bool hide(ProcessID pid);
  bool unhide(ProcessID pid);

 private:
  // A window that was iconified with its application, or was asked to be.
  struct HiddenWindow {
    Subscription watch;
    bool isToShow = false;  // its application could not be hidden: it comes back, should it follow
  };

  // Windows of an application that could not be hidden.
  void takeBack(const std::vector<WindowKey>& windows);
  void showAgain(const std::vector<WindowKey>& windows);
  void mark(xcb_window_t window, bool isHidden);
  void watch(xcb_window_t window);
  // Mapping one window of a hidden application, by a taskbar for example, unhides all of it. One
  // that follows when its application could not be hidden comes back.
  void windowChanged(xcb_window_t window);

  X11Server& server_;
  Iconifier& iconifier_;
  WindowEvents& windowEvents_;
  std::map<xcb_window_t, HiddenWindow> hidden_;
};

}  // namespace pellow
