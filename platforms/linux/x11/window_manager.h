#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "base/geometry.h"
#include "platforms/linux/x11/title_bar.h"
#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// Asks the window manager to do things with windows, and answers once it has. Every call is bounded
// by the deadline and by a moderate time of its own, for a window manager may refuse without a
// word. Any thread.
class WindowManager {
 public:
  explicit WindowManager(X11Server& server) : server_(server), titleBars_(server) {}

  // The title bars that it draws.
  TitleBars& titleBars() { return titleBars_; }

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

  struct ParkedWindow {
    WindowKey key;
    // The window manager did not move it in time, or still arranges it after a change of state: it
    // may move it yet.
    bool isManagerLate = false;
  };
  // Those that a move has put beyond the monitors and none has brought back. A window manager that
  // takes over may show part of them; `parkAgain` puts such a window back in its place there,
  // without waiting for the window manager. One that somebody else brings back is no longer parked;
  // `noteParkedMoved` finds out, and puts back what a late window manager has moved.
  std::vector<ParkedWindow> parkedWindows() const;
  void parkAgain(const WindowKey& window, Deadline deadline);
  void noteParkedMoved(const WindowKey& window, Deadline deadline);

  // `cannotComplete` when the window manager does not do it. A shaded window leaves that state, and
  // takes it up again when it comes back.
  std::expected<void, AXError> minimize(const WindowKey& window, Deadline deadline);
  // Brings the window to the current desktop, too.
  std::expected<void, AXError> unminimize(const WindowKey& window, Deadline deadline);

  // The same for many at once, whoever they are hidden for; false when one of them does not follow.
  // Windows that are gone do not count.
  bool iconify(const std::vector<WindowKey>& windows, Deadline deadline);
  bool deiconify(const std::vector<WindowKey>& windows, Deadline deadline);

  // Puts the window in front of the others on the current desktop, without giving it the keys.
  std::expected<void, AXError> raise(const WindowKey& window, Deadline deadline);

  // Gives the window the keys and puts it in front; a shaded one stays shaded.
  void activate(xcb_window_t window);

 private:
  struct LeftState;
  class Question;
  class Watch;
  using Condition = std::function<bool(const WindowFacts&)>;
  struct Parked {
    PixelPoint place;  // of the frame
    Deadline lateUntil;
    std::uint64_t id = 0;       // of the window
    bool isAskedAgain = false;  // the window manager, for the place
  };
  struct Moved {
    WindowFacts facts;
    bool isManagerLate = false;
  };

  void catchUp();

  // Waits for changes of a window until one look at it fulfils the condition, `patience` at most
  // from the first look on; answers the last look, whether it does or not.
  std::expected<WindowFacts, AXError> waitUntil(const WindowKey& window, Facet facets,
                                                Seconds patience, Deadline deadline,
                                                const Condition& condition);

  // A look at a watched window that fulfils the condition, or else one after the window manager has
  // done what it was asked before, or has had the time to.
  std::expected<WindowFacts, AXError> lookAfterItActed(Watch& watch, const WindowKey& window,
                                                       Deadline deadline, const Condition& isDone);
  // The same after a request to move the frame to the target.
  std::expected<Moved, AXError> lookAfterMove(const WindowFacts& window, PixelPoint target,
                                              Deadline deadline);
  std::expected<WindowFacts, AXError> leaveStates(const WindowFacts& window, Deadline deadline);
  std::expected<void, AXError> takeUpStates(const WindowFacts& window, PixelPoint target,
                                            Deadline deadline);
  void unshade(const WindowKey& window, Deadline deadline);
  void shadeAgain(const WindowKey& window, Deadline deadline);
  // Answers how it was parked before.
  std::optional<Parked> exchangeParked(const WindowKey& window, std::optional<Parked> parked);
  // Answers how the window is parked then, if it is.
  std::expected<std::optional<Parked>, AXError> changePlace(const WindowKey& window,
                                                            PixelPoint target, Deadline deadline);
  void askForMove(const WindowFacts& window, PixelPoint target);
  std::expected<Moved, AXError> moveTo(const WindowFacts& window, PixelPoint target,
                                       Deadline deadline);
  std::expected<void, AXError> pushFrame(const WindowFacts& window, PixelPoint target,
                                         Deadline deadline);
  bool waitForIconified(const WindowKey& window, bool iconified, Seconds patience,
                        Deadline deadline);
  void changeStates(const WindowFacts& window, const LeftState& states, bool add);
  // Nothing remembered is forgotten.
  void remember(const WindowFacts& window, const LeftState& left);
  std::expected<WindowFacts, AXError> lookAfterStateChange(const WindowFacts& before,
                                                           Deadline deadline);
  void bringToCurrentDesktop(const WindowFacts& window, Deadline deadline);

  X11Server& server_;
  TitleBars titleBars_;
  mutable std::mutex parkedMutex_;
  std::map<xcb_window_t, Parked> parked_;
};

}  // namespace pellow
