#pragma once

#include <functional>

#include "platform/panels.h"
#include "platform/queues.h"

namespace pellow {

// Panels as NSPanels. Outlives its panels.
class MacPanels final : public Panels {
 public:
  // `onPointerMoved` hears of every movement over a panel that takes mouse events.
  MacPanels(MainQueue& queue, std::function<void()> onPointerMoved);

  std::unique_ptr<Panel> makePanel(std::string name, WindowShadow shadow) override;

 private:
  class MacPanel;

  MainQueue& queue_;
  std::function<void()> onPointerMoved_;
};

}  // namespace pellow
