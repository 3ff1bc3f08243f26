#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/ax_names.h"
#include "platforms/simulated/window.h"

namespace pellow::simulated {

// An application on the simulated desktop. A value that names it, as `Window` does.
class Application {
 public:
  Application(System& system, ProcessID pid) : system_(&system), pid_(pid) {}

  bool operator==(const Application&) const = default;

  ProcessID pid() const { return pid_; }
  AXElement element() const;

  bool isRunning() const;
  bool isHidden() const;
  bool isFrontmost() const;
  // Front to back, minimized ones last.
  std::vector<Window> windows() const;
  std::optional<Window> focusedWindow() const;

  // A new window in front; it has the focus. The application becomes active if it is regular. With
  // an empty subrole the application tells none.
  Window openWindow(std::string title, QuartzRect frame,
                    std::string subrole = std::string(AX::subrole::standardWindow)) const;
  // Has a place in the Dock from now on, or no longer.
  void becomes(ActivationPolicy policy) const;
  void activate() const;
  void hide() const;
  void unhide() const;
  // Its windows go, then the application; the workspace announces it.
  void quit() const;
  // The same without a chance to say that its windows go.
  void kill() const;

  // All its elements answer after this time, on top of the delay of a window.
  Application answersAfter(Seconds delay) const;
  // The workspace's `hide` fails.
  Application refusesToHide(bool refuses = true) const;
  // Hides this long after the workspace asks it to; `never`: stays, and says that it shows.
  Application hidesAfter(Seconds delay) const;
  // No observer can be added to it.
  Application refusesObservers(bool refuses = true) const;
  // Answers nothing until it wakes, so callers run into their messaging timeout. Then it answers
  // whoever still waits, and those of its windows that act late do what they were asked meanwhile.
  Application hangs() const;
  void wakes() const;
  // Quits during the nth call from now to any of its elements, counted from 1.
  Application quitsDuring(int call) const;

 private:
  ApplicationState& state() const;  // throws when it does not run
  void does(void (DesktopState::*verb)(ProcessID)) const;

  System* system_;
  ProcessID pid_;
};

}  // namespace pellow::simulated
