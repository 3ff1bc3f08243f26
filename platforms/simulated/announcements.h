#pragma once

#include <optional>
#include <vector>

#include "platforms/simulated/desktop_state.h"

namespace pellow::simulated {

// What a desktop tells its observers about one thing that somebody did, in the order in which it
// tells it:
//
//   1  didBecomeRegular         of every regular application that was not one before
//   2  AXWindowMiniaturized     of every window that is minimized now and was not before
//   3  AXUIElementDestroyed     of every window that is gone
//   4  didActivate              of the application that is the frontmost one now and was not before
//   5  AXFocusedWindowChanged   of every running application whose focused window is another one
//                               than before; not when it has none any more
//   6  didTerminate             of every application that has ended
//
// So minimizing the focused window tells 2 and, if its application shows another window, 5; hiding
// or quitting the frontmost application tells 4 of the one that takes its place, and nothing of
// that one's focus, which has been there all the time; a click on a background window of another
// application tells 4, then 5. What changes nothing tells nothing. A killed application does not
// tell 3. Without permission nobody hears 2, 3 and 5.
struct Announcement {
  enum class Kind {
    didBecomeRegular,
    windowMiniaturized,
    elementDestroyed,
    didActivate,
    focusedWindowChanged,
    didTerminate,
  };

  Kind kind = Kind::didBecomeRegular;
  ProcessID pid = 0;
  WindowID window = 0;  // of 2, 3 and 5
};

// What observers can tell apart in a desktop at one moment.
class Glance {
 public:
  explicit Glance(const DesktopState& desktop);

  // In order.
  std::vector<Announcement> announcementsSince(const Glance& before) const;

 private:
  struct Window {
    WindowID id;
    ProcessID pid;
    bool minimized;
  };
  struct Application {
    ProcessID pid;
    bool isRegular;
    std::optional<WindowID> focusedWindow;
  };

  std::vector<Window> windows_;            // by id
  std::vector<Application> applications_;  // by process
  std::optional<ProcessID> frontmost_;
};

}  // namespace pellow::simulated
