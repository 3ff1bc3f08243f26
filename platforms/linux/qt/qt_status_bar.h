#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "platform/status_bar.h"
#include "platforms/linux/qt/window_hints.h"
#include "platforms/linux/x11/pixel_rect.h"

namespace pellow {

// Status items in the tray: a StatusNotifierItem or a window in the X11 tray, whichever place is
// there first, a host for StatusNotifierItems if both are. It may come later, and another one of
// its kind may follow; the kind stays until the process ends. Without a place an item is nowhere;
// that is no error. Outlives its items.
class QtStatusBar final : public StatusBar {
 public:
  // `panels` answers which parts of the X screen panels have for themselves.
  explicit QtStatusBar(std::function<std::vector<PixelRect>()> panels)
      : panels_(std::move(panels)) {}

  std::unique_ptr<StatusItem> makeStatusItem() override;

 private:
  class QtStatusItem;

  std::function<std::vector<PixelRect>()> panels_;
  WindowHints hints_;
};

}  // namespace pellow
