#pragma once

#include "platform/status_bar.h"
#include "platforms/linux/qt/window_hints.h"

namespace pellow {

// Status items in the tray: a StatusNotifierItem or a window in the X11 tray, whichever place is
// there first, a host for StatusNotifierItems if both are. It may come later, and another one of
// its kind may follow; the kind stays until the process ends. Without a place an item is nowhere;
// that is no error. Outlives its items.
class QtStatusBar final : public StatusBar {
 public:
  std::unique_ptr<StatusItem> makeStatusItem() override;

 private:
  class QtStatusItem;

  WindowHints hints_;
};

}  // namespace pellow
