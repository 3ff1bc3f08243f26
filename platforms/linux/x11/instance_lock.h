#pragma once

#include "platforms/linux/x11/x11_connection.h"

namespace pellow {

// One program for each X screen: whoever owns the selection _PELLOW_INSTANCE_S<screen> is it, until
// its connection ends.
class InstanceLock {
 public:
  // `connection` must live as long as the claim.
  explicit InstanceLock(X11Connection& connection);

  // False when another program has it.
  bool claim();
  // Blocks until the other program has gone, `timeout` at most.
  bool wait(Seconds timeout);

 private:
  struct Owner {
    bool isOurs = false;
    xcb_window_t window = XCB_WINDOW_NONE;
  };
  Owner claimOrFindOwner();

  X11Connection& connection_;
  xcb_atom_t selection_;
  xcb_window_t window_;  // that owns the selection for us
};

}  // namespace pellow
