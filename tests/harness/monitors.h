#pragma once

#include <xcb/randr.h>

#include <memory>
#include <string>

#include "tests/harness/desktop_session.h"

namespace pellow::desktop {

// The monitors of a virtual server, which its clients define. The server's own one goes.
class Monitors {
 public:
  explicit Monitors(const std::string& display);

  // A monitor that is already plugged in moves there.
  void plug(const std::string& name, PixelRect place, bool isPrimary = false);
  void unplug(const std::string& name);

  // Resizes the X screen from its top left, to at most its first size, as desktops do when monitors
  // come and go.
  void resizeScreen(int width, int height);

 private:
  xcb_atom_t atom(const std::string& name) const;
  void switchOff(xcb_randr_crtc_t picture, xcb_timestamp_t configured);

  std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection_;
  WindowID root_ = 0;
};

}  // namespace pellow::desktop
