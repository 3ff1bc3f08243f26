#pragma once

#include <expected>
#include <optional>
#include <string>
#include <vector>

#include "access/ax.h"
#include "base/geometry.h"
#include "platform/accessibility.h"
#include "platform/clock.h"

namespace pellow {

// Whether a move waits for the window to report its new place.
enum class Verify { no, yes };

// What a window says about itself.
struct WindowState {
  std::string title;
  std::optional<QuartzRect> frame;
  bool isMinimized = false;
  bool answers = true;  // whether its application did, in time
};

// One window of another application. Any thread unless told otherwise.
struct TargetWindow {
  AXElement element;
  ProcessID pid = 0;  // the owner, as the element reports it

  // The same window; the process is not compared.
  bool operator==(const TargetWindow& other) const { return element == other.element; }

  // The standard windows of a process, in its own order: no dialogs, sheets or panels, and none
  // that does not say within `timeout` what it is.
  static std::vector<TargetWindow> windows(Accessibility& accessibility, ProcessID pid,
                                           Seconds timeout = AX::timeout::windowChange);

  // The windows of every kind, or the application's error. `timeout` is how long it may take to
  // list them.
  static std::expected<std::vector<TargetWindow>, AXError> everyWindow(Accessibility& accessibility,
                                                                       ProcessID pid,
                                                                       Seconds timeout);

  // The focused window of the application that was in front, if there was one.
  static std::optional<TargetWindow> frontmost(Accessibility& accessibility,
                                               std::optional<ProcessID> frontmostApplication);

  // Whether the window is certainly gone (`invalidUIElement`) and does not merely fail. Nothing
  // when its application does not answer at once.
  std::optional<bool> isGone() const;

  // Read in one call, bounded by `timeout`.
  WindowState state(Seconds timeout = AX::timeout::windowChange) const;

  // Moves the window's top left corner. With `Verify::yes` it waits, for 0.6 s at most, until the
  // window is within 2 points of `point` on both axes, and answers where it is then, which may be
  // elsewhere; without, it answers `point`. `timeout` bounds each call. Throws
  // `PellowError::moveFailed`. Sleeps: on the main thread only where nothing waits for it, as at
  // launch.
  QuartzPoint move(QuartzPoint point, Verify verify, Clock& clock,
                   Seconds timeout = AX::timeout::windowChange) const;
};

}  // namespace pellow
