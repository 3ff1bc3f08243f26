#pragma once

#include <memory>
#include <string>

#include "base/geometry.h"
#include "platform/view.h"

namespace pellow {

// Where a panel stands among all windows.
enum class PanelLevel {
  statusWindow,  // level 25: above the windows of applications
  desktopIcons,  // one above the desktop icons: below the windows of applications
};

// A borderless window that never takes the focus, stands on every desktop and beside full-screen
// windows, and stays while other applications are active. Closes when it is destroyed.
class Panel {
 public:
  virtual ~Panel() = default;

  // Shows `root`, whose frame's size is the panel's content size.
  virtual void setContent(const View& root) = 0;

  virtual void setFrame(const AppKitRect& frame) = 0;
  virtual AppKitRect frame() const = 0;

  virtual void setLevel(PanelLevel level) = 0;

  // Shows it in front of the panels of its level, without activating anything.
  virtual void orderFront() = 0;
  virtual void orderOut() = 0;
  virtual bool isVisible() const = 0;
};

// Main thread.
class Panels {
 public:
  virtual ~Panels() = default;

  // A hidden panel. `name` tells other programs what it is, for example "pellow-strip".
  virtual std::unique_ptr<Panel> makePanel(std::string name) = 0;
};

}  // namespace pellow
