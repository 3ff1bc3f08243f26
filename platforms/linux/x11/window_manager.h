#pragma once

#include "platforms/linux/x11/iconifier.h"
#include "platforms/linux/x11/title_bar.h"
#include "platforms/linux/x11/window_parking.h"

namespace pellow {

// What the window manager does with windows, part by part. A call that asks it for something
// answers once it has done it, and is bounded by the deadline and by a moderate time of its own,
// for a window manager may refuse without a word. Any thread.
class WindowManager {
 public:
  explicit WindowManager(X11Server& server)
      : titleBars_(server),
        states_(server),
        mover_(server),
        parkedFrames_(server, states_, mover_),
        parking_(server, states_, mover_, parkedFrames_),
        foreground_(server, states_),
        iconifier_(server, states_, foreground_) {}

  // The title bars that it draws.
  TitleBars& titleBars() { return titleBars_; }
  WindowParking& parking() { return parking_; }
  ParkedFrames& parkedFrames() { return parkedFrames_; }
  Foreground& foreground() { return foreground_; }
  Iconifier& iconifier() { return iconifier_; }

 private:
  TitleBars titleBars_;
  WindowStates states_;
  FrameMover mover_;
  ParkedFrames parkedFrames_;
  WindowParking parking_;
  Foreground foreground_;
  Iconifier iconifier_;
};

}  // namespace pellow
