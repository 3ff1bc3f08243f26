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

 private:
  bool isReserved(std::uint8_t keycode, const std::vector<unsigned>& modifiers,
                  Deadline deadline) const;
  bool isReservedByCore(std::uint8_t keycode, const std::vector<unsigned>& modifiers,
                        Deadline deadline) const;
  bool isReservedByXInput(std::uint8_t keycode, const std::vector<unsigned>& modifiers,
                          Deadline deadline) const;

  X11Server& server_;
  bool hasXInput_;
};

}  // namespace pellow
