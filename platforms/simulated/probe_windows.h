#pragma once

#include <memory>
#include <string>

#include "platform/probe_windows.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// The probe windows of the program: windows of the desktop like any other, in the middle of the
// main screen, with a colour below the title bar.
class ProbeWindows final : public pellow::ProbeWindows {
 public:
  explicit ProbeWindows(System& system) : system_(system) {}

  std::unique_ptr<ProbeWindow> openWindow(std::string name, std::string title, Size contentSize,
                                          Colour fill) override;

 private:
  System& system_;
};

}  // namespace pellow::simulated
