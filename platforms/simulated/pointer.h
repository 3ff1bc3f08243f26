#pragma once

#include <optional>

#include "base/geometry.h"
#include "platforms/simulated/desktop_state.h"

namespace pellow::simulated {

class EventMonitors;
class OpenMenu;
class Panels;
class System;

// The pointer in the user's hand. Every verb is an event that reaches the program in its main loop.
//
// What lies on top gets it: the open menu, a panel of the program, a window of another application.
// Until the primary button is released, all movements go to where it was pressed, and the monitors
// of that side hear them: the local ones over panels and windows of the program, the global ones
// over everything else.
class Pointer {
 public:
  Pointer(System& system, EventMonitors& monitors, Panels& panels, OpenMenu& menu)
      : system_(system), monitors_(monitors), panels_(panels), menu_(menu) {}

  // A movement between a press and a release is a drag.
  void move(AppKitPoint to);
  // Of the primary button, there. A press brings a window of another application to the front,
  // unless it is on its minimize button, which acts at the release.
  void press(AppKitPoint at);
  void pressHere();  // where it is by then
  void release();
  void click(AppKitPoint at);
  // Press, `steps` movements in a straight line, release.
  void drag(AppKitPoint from, AppKitPoint to, int steps = 10);
  // Opens the context menu of the view there, unless the primary button is held down.
  void secondaryClick(AppKitPoint at);

 private:
  enum class Holder { nobody, program, others };

  void pressed();
  void released();
  void pressedOnWindow();
  bool isOverProgram() const;
  std::optional<WindowID> minimizeButtonBelow() const;

  System& system_;
  EventMonitors& monitors_;
  Panels& panels_;
  OpenMenu& menu_;
  Holder holder_ = Holder::nobody;
  std::optional<WindowID> pressedButton_;  // the window whose minimize button is held down
};

}  // namespace pellow::simulated
