#pragma once

#include <functional>
#include <optional>

#include "base/handler_list.h"
#include "platforms/linux/x11/active_window.h"
#include "platforms/linux/x11/foreground.h"

namespace pellow {

// Gives the keys to the window of the application that was raised last, else to its topmost one, on
// the current desktop if it has one there. False when it has no window at all. Any thread.
bool activateApplication(X11Server& server, Foreground& foreground, ProcessID pid,
                         Deadline deadline);

// The application that has the keys. Main thread unless told otherwise.
class ApplicationActivation {
 public:
  ApplicationActivation(X11Server& server, ActiveWindow& activeWindow);

  // The main loop gets the last one known while the server does not answer. Any thread.
  std::optional<ProcessID> frontmost();

  // Another application has got them.
  Subscription onChange(std::function<void(ProcessID)> observer) {
    return observers_.add(std::move(observer));
  }

 private:
  X11Server& server_;
  std::optional<ProcessID> last_;
  Subscription activeWatch_;
  HandlerList<void(ProcessID)> observers_;
};

}  // namespace pellow
