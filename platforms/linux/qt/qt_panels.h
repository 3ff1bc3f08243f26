#pragma once

#include <functional>
#include <set>

#include "platform/panels.h"
#include "platform/queues.h"
#include "platforms/linux/qt/compositor.h"
#include "platforms/linux/qt/panel_canvas.h"
#include "platforms/linux/qt/picture_source.h"
#include "platforms/linux/qt/window_hints.h"
#include "platforms/linux/x11/pixel_rect.h"

namespace pellow {

// Panels as windows of docks, which window managers neither place nor focus. Compositors give docks
// shadows, or none, by their own settings. Outlives its panels.
class QtPanels final : public Panels {
 public:
  // What panels must know of the desktop.
  struct Surroundings {
    // Where a rectangle lies on the X screen.
    std::function<PixelRect(const AppKitRect&)> toPixels;
    // Whether the window manager makes a bar of each dock: panels are then left to themselves.
    std::function<bool()> stretchesDocks;
    // Whether the X server answers right now.
    std::function<bool()> serverAnswers;
  };

  QtPanels(MainQueue& queue, Surroundings surroundings);
  ~QtPanels() override;

  std::unique_ptr<Panel> makePanel(std::string name, WindowShadow shadow) override;

  // `toPixels` answers something else from now on.
  void placeAnew();

 private:
  class QtPanel;

  void raise(PanelCanvas& canvas);

  MainQueue& queue_;
  Surroundings around_;
  PictureSource pictures_;
  WindowHints hints_;
  Compositor compositor_;
  std::set<QtPanel*> panels_;
};

}  // namespace pellow
