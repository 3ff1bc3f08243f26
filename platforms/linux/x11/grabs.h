#pragma once

#include <xcb/xproto.h>

#include <cstdint>
#include <vector>

#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// What other clients have grabbed. The X server does not tell, but it refuses what somebody else
// has; so every question is an attempt that comes to nothing, whether it succeeds or not. A server
// that does not answer in time has no grabs. Main thread.
class Grabs {
 public:
  explicit Grabs(X11Server& server);

  // Whether somebody gets the presses of a key with one of these X modifier bits, wherever the
  // keyboard is, as desktops do for their shortcuts. Takes no key press from anybody.
  bool isReserved(std::uint8_t keycode, const std::vector<unsigned>& modifiers) const;

  // Whether the press of a key, with these X modifier bits, goes to somebody who has taken the
  // whole keyboard: the lock of a screen, an open menu, a game. A reserved key takes the keyboard
  // too, while it is down; that does not count, unless the pointer is taken as well. (So on a
  // desktop that reserves Super alone, a game that takes no pointer cannot be told from a chord.)
  bool hideKey(std::uint8_t keycode, unsigned modifiers) const;

  // Whether somebody has taken the keyboard and the pointer.
  bool hideEverything() const;

 private:
  struct Taken {
    bool keyboard = false;
    bool pointer = false;
  };

  Taken taken(Deadline deadline) const;
  bool isReserved(std::uint8_t keycode, const std::vector<unsigned>& modifiers,
                  Deadline deadline) const;
  bool isReservedByCore(std::uint8_t keycode, const std::vector<unsigned>& modifiers,
                        Deadline deadline) const;
  bool isReservedByXInput(std::uint8_t keycode, const std::vector<unsigned>& modifiers,
                          Deadline deadline) const;
  bool isOtherHeldKeyReserved(std::uint8_t than, Deadline deadline) const;

  X11Server& server_;
  xcb_window_t neverMapped_;
  bool hasXInput_;
};

}  // namespace pellow
