#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "platforms/linux/x11/frame_mover.h"
#include "platforms/linux/x11/window_states.h"

namespace pellow {

// The register of the frames that a move has put beyond the monitors and none has brought back. Any
// thread.
class ParkedFrames {
 public:
  // How long a window manager may still arrange a window after a change of state: metacity does it
  // when it has nothing else to do.
  static constexpr Seconds arrangePatience = 1;

  struct Parked {
    PixelPoint place;  // of the frame
    // The window manager did not move it in time, or still arranges it after a change of state: it
    // may move it yet.
    Deadline lateUntil;
    std::uint64_t id = 0;       // of the window
    bool isAskedAgain = false;  // the window manager, for the place
  };
  struct Entry {
    WindowKey key;
    bool isManagerLate = false;
  };

  ParkedFrames(X11Server& server, WindowStates& states, FrameMover& mover)
      : server_(server), states_(states), mover_(mover) {}

  std::vector<Entry> all() const;

  // Writes down how the window is parked, if it is; answers how it was before.
  std::optional<Parked> exchange(const WindowKey& window, std::optional<Parked> parked);

  // A window manager that takes over may show part of a parked window: this puts it back in its
  // place, without waiting for the window manager.
  void parkAgain(const WindowKey& window, Deadline deadline);

  // A window that somebody else brings back is no longer parked: this finds out, and puts back what
  // a late window manager has moved.
  void noteMoved(const WindowKey& window, Deadline deadline);

 private:
  using Turn = std::unique_lock<std::timed_mutex>;

  // None if the one who has it waits for a server that does not answer the main thread.
  Turn turn(Deadline deadline);
  std::optional<Parked> parked(const WindowKey& window) const;
  void set(const WindowKey& window, const std::optional<Parked>& parked);

  X11Server& server_;
  WindowStates& states_;
  FrameMover& mover_;
  std::timed_mutex turns_;    // of those that look and then act
  mutable std::mutex mutex_;  // held by nobody who waits
  std::map<xcb_window_t, Parked> parked_;
};

}  // namespace pellow
