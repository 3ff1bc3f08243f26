#pragma once

#include <memory>
#include <string>

#include "platform/probe_windows.h"
#include "platforms/linux/qt/window_hints.h"

namespace pellow {

// Probe windows as widgets.
class QtProbeWindows final : public ProbeWindows {
 public:
  std::unique_ptr<ProbeWindow> openWindow(std::string name, std::string title, Size contentSize,
                                          Colour fill) override;

 private:
  WindowHints hints_;
};

}  // namespace pellow
