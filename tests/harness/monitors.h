#pragma once

#include <xcb/randr.h>

#include <memory>
#include <string>

#include "tests/harness/desktop_session.h"

namespace pellow::desktop {

// The monitors of a virtual server, which are what its clients say they are. The one that the
// server makes by itself goes.
class Monitors {
 public:
  explicit Monitors(const std::string& display);

  // A monitor that is plugged in already moves there.
  void plug(const std::string& name, PixelRect place, bool isPrimary = false);
  void unplug(const std::string& name);

  // Makes the X screen as large as that, from its top left, and no larger than it was at first:
  // what desktops do with it when monitors come and go.
  void resizeScreen(int width, int height);

 private:
  xcb_atom_t atom(const std::string& name) const;
  void switchOff(xcb_randr_crtc_t picture, xcb_timestamp_t configured);

  std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection_;
  WindowID root_ = 0;
};

}  // namespace pellow::desktop
