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

// Whether a move waits until the window reports its new place.
enum class Verify { no, yes };

// What a window says of itself.
struct WindowState {
  std::string title;
  std::optional<QuartzRect> frame;
  bool isMinimized = false;
  bool answers = true;  // its application did, in time
};

// One window of another application.
struct TargetWindow {
  AXElement element;
  ProcessID pid = 0;  // the owner, as the element reports it

  // The same window; the process is not compared.
  bool operator==(const TargetWindow& other) const { return element == other.element; }

  // The standard windows of a process, in its own order: no dialogs, sheets, panels and nothing
  // that does not tell what it is, for which each has `timeout`. Any thread.
  static std::vector<TargetWindow> windows(Accessibility& accessibility, ProcessID pid,
                                           Seconds timeout = AX::timeout::windowChange);

  // The windows of every kind. `timeout` is how long the application may take to list them; its
  // error, if it does not. Any thread.
  static std::expected<std::vector<TargetWindow>, AXError> everyWindow(Accessibility& accessibility,
                                                                       ProcessID pid,
                                                                       Seconds timeout);

  // The focused window of the application that was in front, if there was one. Any thread.
  static std::optional<TargetWindow> frontmost(Accessibility& accessibility,
                                               std::optional<ProcessID> frontmostApplication);

  // Whether the window is surely gone (`invalidUIElement`), not failing otherwise. Nothing when its
  // application does not answer at once. Any thread.
  std::optional<bool> isGone() const;

  // Read in one call, which may take that long. Any thread.
  WindowState state(Seconds timeout = AX::timeout::windowChange) const;

  // Moves the window's top left corner. With `Verify::yes` it waits until the window stands within
  // 2 points of `point` on both axes, at most 0.6 s, and answers where it stands then, which may be
  // elsewhere; without, it answers `point`. `timeout` bounds each call. Throws
  // `PellowError::moveFailed`. Sleeps: on the main thread only where nothing waits for it, as at
  // launch.
  QuartzPoint move(QuartzPoint point, Verify verify, Clock& clock,
                   Seconds timeout = AX::timeout::windowChange) const;
};

}  // namespace pellow
