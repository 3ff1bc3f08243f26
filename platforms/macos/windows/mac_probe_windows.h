#pragma once

#include <memory>
#include <string>

#include "platform/probe_windows.h"

namespace pellow {

class Foreground;

// Probe windows as windows of AppKit like those of most applications.
class MacProbeWindows final : public ProbeWindows {
 public:
  explicit MacProbeWindows(std::shared_ptr<Foreground> foreground);

  std::unique_ptr<ProbeWindow> openWindow(std::string name, std::string title, Size contentSize,
                                          Colour fill) override;

 private:
  std::shared_ptr<Foreground> foreground_;
};

}  // namespace pellow
