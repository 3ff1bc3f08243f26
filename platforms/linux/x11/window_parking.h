#pragma once

#include "base/geometry.h"
#include "platforms/linux/x11/parked_frames.h"

namespace pellow {

// Moves windows, beyond the monitors and back again. Any thread.
class WindowParking {
 public:
  WindowParking(X11Server& server, WindowStates& states, FrameMover& mover, ParkedFrames& frames)
      : server_(server), states_(states), mover_(mover), frames_(frames) {}

  // Moves the frame's top left corner. A maximized, full-screen or shaded window leaves that state,
  // since it would not move, and takes it up again when a move shows it on the monitors. Success
  // means that the window manager has been asked and given the time to act: only a look at the
  // frame tells where the window is.
  std::expected<void, AXError> moveFrame(const WindowKey& window, QuartzPoint origin,
                                         Deadline deadline);

  // A Pellow killed in the middle of a move leaves the window half-way, or without the states it
  // was to take up again. This finishes the move, beyond the monitors or on them. Call it while no
  // other Pellow runs, before anybody looks where windows are. Waits for a busy window manager, a
  // few seconds at most.
  void finishInterruptedMoves();

 private:
  using Parked = ParkedFrames::Parked;

  // Answers how the window is parked then, if it is.
  std::expected<std::optional<Parked>, AXError> changePlace(const WindowKey& window,
                                                            PixelPoint target, Deadline deadline);
  // Moves it and gives it back the states that it has left.
  std::expected<void, AXError> bringBack(const WindowFacts& window, PixelPoint target,
                                         Deadline deadline);

  X11Server& server_;
  WindowStates& states_;
  FrameMover& mover_;
  ParkedFrames& frames_;
};

}  // namespace pellow
