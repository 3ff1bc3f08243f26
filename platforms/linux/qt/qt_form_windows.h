#pragma once

#include "platform/form_windows.h"
#include "platforms/linux/qt/window_hints.h"

namespace pellow {

// Forms as windows with tabs. Outlives its windows.
class QtFormWindows final : public FormWindows {
 public:
  std::unique_ptr<FormWindow> makeWindow(std::string name, std::string title) override;

 private:
  class QtFormWindow;

  WindowHints hints_;
};

}  // namespace pellow
