#pragma once

#include "platforms/linux/x11/window_watch.h"

namespace pellow {

// Moves the frames of windows: asks the window manager, and where it keeps part of a window on the
// screen, moves the frame past it. Any thread.
class FrameMover {
 public:
  explicit FrameMover(X11Server& server) : server_(server) {}

  struct Moved {
    WindowFacts facts;
    bool isManagerLate = false;  // it did not move the window in time: it may move it yet
  };
  // Brings the frame's top left corner to the target: exactly there beyond the monitors, and as far
  // as the window manager lets it on them. A window in a state in which it does not move stays.
  std::expected<Moved, AXError> move(const WindowFacts& window, PixelPoint target,
                                     Deadline deadline);

  // The two steps of that, without waiting for the window manager.
  void ask(const WindowFacts& window, PixelPoint target);
  std::expected<void, AXError> push(const WindowFacts& window, PixelPoint target,
                                    Deadline deadline);

 private:
  std::expected<Moved, AXError> askAndLook(const WindowFacts& window, PixelPoint target,
                                           Deadline deadline);

  X11Server& server_;
};

}  // namespace pellow
