#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/ax_element.h"
#include "platforms/simulated/desktop_state.h"

namespace pellow::simulated {

class System;

// A window of an application on the simulated desktop, as its user and its application see it. A
// value that names the window; it stays valid, and says so, when the window is gone. Quartz space.
class Window {
 public:
  Window(System& system, WindowID id) : system_(&system), id_(id) {}

  bool operator==(const Window&) const = default;

  WindowID id() const { return id_; }
  // What the program gets to see of it.
  AXElement element() const;

  bool exists() const;
  // Not minimized, and its application not hidden. It may still lie outside all displays.
  bool isVisible() const;
  // The share of its area that displays show, from 0 to 1; 0 when it is not visible.
  double shareOnDisplays() const;
  bool isMinimized() const;
  bool hasFocus() const;  // of the frontmost application
  bool isInFront() const;
  QuartzRect frame() const;
  AppKitPoint minimizeButton() const;  // its middle, where a click minimizes the window
  std::string title() const;
  ProcessID pid() const;

  // What its user does with it.
  void moveTo(QuartzPoint origin) const;
  void resize(Size size) const;
  void rename(std::string title) const;
  void minimize() const;
  void unminimize() const;
  void raise() const;
  // In the menu "Window" of its application, or in the Dock: it comes back, in front, and its
  // application becomes active.
  void chooseFromWindowMenu() const;
  void close() const;
  // Its application says that it is destroyed, though it lives on.
  void orderOut() const;

  // Manners. Each returns the window, for chaining.

  // Answers every call after this time. A caller whose messaging timeout is shorter gets
  // `cannotComplete` when that has passed, and nothing is done.
  Window answersAfter(Seconds delay) const;
  // Makes the change even after its caller has given up.
  Window actsLate() const;
  // Says yes to a move and stays where it is.
  Window refusesToMove(bool refuses = true) const;
  // Comes to rest inside the visible frame of a display.
  Window clampsToDisplay() const;
  Window snapsToGrid(double step) const;
  // Goes where `moves` says when asked to go somewhere.
  Window movesTo(std::function<QuartzPoint(QuartzPoint asked)> moves) const;
  // Answers calls of this name with the error, always or the next time.
  Window fails(std::string name, AXError error, std::optional<AXCall> call = std::nullopt) const;
  Window failsNext(std::string name, AXError error,
                   std::optional<AXCall> call = std::nullopt) const;
  // Closes during the nth call from now, counted from 1.
  Window closesDuring(int call) const;
  // Is painted with its corner here, wherever its frame is.
  Window isPaintedAt(QuartzPoint origin) const;
  // Has no minimize button.
  Window withoutMinimizeButton() const;
  // Forgets all manners.
  Window behaves() const;

 private:
  WindowState& state() const;  // throws when the window is gone
  void does(void (DesktopState::*verb)(WindowID)) const;

  System* system_;
  WindowID id_;
};

}  // namespace pellow::simulated
