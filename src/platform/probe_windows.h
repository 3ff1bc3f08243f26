#pragma once

#include <memory>
#include <string>

#include "base/colour.h"
#include "base/geometry.h"

namespace pellow {

// An ordinary window of this process, to try on it what is done to the windows of others. The user
// may close it at any time. It goes with this object.
class ProbeWindow {
 public:
  virtual ~ProbeWindow() = default;

  // Points, without the title bar.
  virtual void setContentSize(Size size) = 0;
};

// Main thread.
class ProbeWindows {
 public:
  virtual ~ProbeWindows() = default;

  // Shows a window filled with one colour, in front and with the keyboard. `name` tells other
  // programs what it is: "pellow-probe".
  virtual std::unique_ptr<ProbeWindow> openWindow(std::string name, std::string title,
                                                  Size contentSize, Colour fill) = 0;
};

}  // namespace pellow
