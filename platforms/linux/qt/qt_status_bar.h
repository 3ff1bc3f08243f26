#pragma once

#include "platform/status_bar.h"
#include "platforms/linux/qt/window_hints.h"

namespace pellow {

// Status items in the tray: a StatusNotifierItem if a host for it runs when the item is made, else
// a window in the X11 tray, which may come later. Without any tray an item is nowhere; that is no
// error. Outlives its items.
class QtStatusBar final : public StatusBar {
 public:
  std::unique_ptr<StatusItem> makeStatusItem() override;

 private:
  class QtStatusItem;

  WindowHints hints_;
};

}  // namespace pellow
