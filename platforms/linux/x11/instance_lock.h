#pragma once

#include "platforms/linux/x11/x11_connection.h"

namespace pellow {

// One program for each X screen: whoever owns the selection _PELLOW_INSTANCE_S<screen> is it, until
// its connection ends.
class InstanceLock {
 public:
  // `connection` must live as long as the claim.
  explicit InstanceLock(X11Connection& connection);

  // Claims it if it is free. The error says that another program has it, or that the server did not
  // answer; then nothing is claimed.
  std::expected<void, SystemError> claim();
  // The same, but blocks until the other program has gone, `timeout` at most.
  std::expected<void, SystemError> wait(Seconds timeout);

 private:
  // Our window when we have it now, else the other program's.
  std::expected<xcb_window_t, SystemError> claimOrFindOwner(Deadline deadline);
  bool awaitEndOf(xcb_window_t owner, Deadline deadline);

  X11Connection& connection_;
  xcb_atom_t selection_;
  xcb_window_t window_;  // that owns the selection for us
};

}  // namespace pellow
