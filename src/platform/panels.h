#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/geometry.h"
#include "platform/clock.h"
#include "platform/view.h"

namespace pellow {

// Where a panel stands among all windows.
enum class PanelLevel {
  statusWindow,  // level 25: above the windows of applications
  desktopIcons,  // one above the desktop icons: below the windows of applications
};

// Whether the panel's shape throws a shadow on what lies below; a view's own shadow ends at the
// panel's edge. Where a compositor decides that for all windows alike, this is only a wish.
enum class WindowShadow { no, yes };

enum class AnimationTiming { linear, easeOut, easeInOut };

// A borderless window that never takes the focus, stands on every desktop and beside full-screen
// windows, and stays while other applications are active. Closes when it is destroyed.
class Panel {
 public:
  virtual ~Panel() = default;

  // Shows `root`, whose frame's size is the content size. While the panel has another size, as
  // during an animation, the content is scaled to it; corner radii are not.
  virtual void setContent(const View& root) = 0;

  virtual void setFrame(const AppKitRect& frame) = 0;
  virtual AppKitRect frame() const = 0;

  // Moves, resizes and fades from where it is now to this frame and opacity (0 to 1), then calls
  // `onDone` on the main queue. A newer animation, `setFrame` or the panel's end cuts it short, and
  // `onDone` is not called. `frame` answers the target from the start.
  virtual void animate(const AppKitRect& frame, double opacity, Seconds duration,
                       AnimationTiming timing, std::function<void()> onDone) = 0;

  virtual void setLevel(PanelLevel level) = 0;

  // Whether the pointer passes through to what lies below; at first it does not.
  virtual void setIgnoresMouseEvents(bool ignores) = 0;

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
  virtual std::unique_ptr<Panel> makePanel(std::string name, WindowShadow shadow) = 0;
};

}  // namespace pellow
