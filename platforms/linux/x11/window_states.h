#pragma once

#include "platforms/linux/x11/left_state.h"
#include "platforms/linux/x11/window_watch.h"

namespace pellow {

// Takes windows out of the states in which they do not move or cannot be iconified (maximized, full
// screen, shaded), and gives those states back. What a window has left is remembered on the window
// itself, so that the next Pellow knows after a crash. Any thread.
class WindowStates {
 public:
  explicit WindowStates(X11Server& server) : server_(server) {}

  // The window as it is without the states it was in, which it remembers; `cannotComplete` when the
  // window manager does not take it out of them.
  std::expected<WindowFacts, AXError> leave(const WindowFacts& window, Deadline deadline);
  // Gives the window the states that it has left, which it then forgets.
  std::expected<void, AXError> takeUp(const WindowFacts& window, const LeftState& left,
                                      Deadline deadline);
  // Only asks for states: waits for nothing and forgets nothing.
  void askToTakeUp(const WindowFacts& window, const LeftState& states);

  // For iconifying: some window managers do not iconify a shaded window, others then forget that it
  // was shaded.
  void unshade(const WindowKey& window, Deadline deadline);
  void shadeAgain(const WindowKey& window, Deadline deadline);

  // Nothing remembered is forgotten.
  void remember(const WindowFacts& window, const LeftState& left);

 private:
  void change(const WindowFacts& window, const LeftState& states, bool add);
  std::expected<WindowFacts, AXError> lookAfterChange(const WindowFacts& before, Deadline deadline);

  X11Server& server_;
};

}  // namespace pellow
