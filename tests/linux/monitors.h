#pragma once

#include <xcb/randr.h>

#include <memory>
#include <string>

#include "platforms/linux/x11/x11_connection.h"
#include "tests/desktop/desktop_session.h"

namespace pellow::desktop {

// The monitors of a virtual server, which are what its clients say they are.
class Monitors {
 public:
  explicit Monitors(const std::string& display);

  // The first one takes the place of the one that the server makes by itself.
  void plug(const std::string& name, PixelRect place, bool isPrimary, bool isFirst = false);
  void unplug(const std::string& name);

 private:
  std::unique_ptr<X11Connection> connection_;
  xcb_randr_output_t output_ = 0;
};

}  // namespace pellow::desktop
