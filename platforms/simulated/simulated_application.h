#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/ax_names.h"
#include "platforms/simulated/simulated_window.h"

namespace pellow::simulated {

// An application on the simulated desktop. A value that names it, as `SimulatedWindow` does.
class SimulatedApplication {
 public:
  SimulatedApplication(SimulatedSystem& system, ProcessID pid) : system_(&system), pid_(pid) {}

  bool operator==(const SimulatedApplication&) const = default;

  ProcessID pid() const { return pid_; }
  AXElement element() const;

  bool isRunning() const;
  bool isHidden() const;
  // Whether its user hid it, or the program; nothing while it is not hidden.
  std::optional<Actor> hiddenBy() const;
  bool isFrontmost() const;
  // Front to back, minimized ones last.
  std::vector<SimulatedWindow> windows() const;
  std::optional<SimulatedWindow> focusedWindow() const;

  // A new window in front; it has the focus. The application becomes active if it is regular. An
  // empty subrole is one that the application does not tell.
  SimulatedWindow openWindow(std::string title, QuartzRect frame,
                             std::string subrole = std::string(AX::subrole::standardWindow)) const;
  // Has a place in the Dock from now on, or none any more.
  void becomes(ActivationPolicy policy) const;
  void activate() const;
  // A click on its place in the Dock: it becomes active, and if it shows no window, a minimized one
  // comes back.
  void clickInDock() const;
  void hide() const;
  void unhide() const;
  // Its windows go, then the application; the workspace announces it.
  void quit() const;
  // The same without a chance to say that its windows go.
  void kill() const;

  // All its elements answer after this time, on top of the delay of a window.
  SimulatedApplication answersAfter(Seconds delay) const;
  // The workspace's `hide` fails.
  SimulatedApplication refusesToHide(bool refuses = true) const;
  // Hides so long after the workspace has asked it to; `never`: stays, and says that it shows.
  SimulatedApplication hidesAfter(Seconds delay) const;
  // No observer can be added to it.
  SimulatedApplication refusesObservers(bool refuses = true) const;
  // Answers nothing, so that callers lose their messaging timeout, until it wakes. Then it answers
  // who still waits, and those of its windows that act late do what they were asked meanwhile.
  SimulatedApplication hangs() const;
  void wakes() const;
  // Quits during the nth call from now to any of its elements, counted from 1.
  SimulatedApplication quitsDuring(int call) const;
  // Is killed during that call.
  SimulatedApplication diesDuring(int call) const;

 private:
  ApplicationState& state() const;  // throws when it does not run
  void does(void (DesktopState::*verb)(ProcessID)) const;

  SimulatedSystem* system_;
  ProcessID pid_;
};

}  // namespace pellow::simulated
