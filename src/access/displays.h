#pragma once

#include <optional>
#include <vector>

#include "base/geometry.h"
#include "base/subscription.h"
#include "platform/screens.h"

namespace pellow {

// The displays as windows see them: in Quartz space, flipped by the height of the primary display.
// Main thread.
class Displays {
 public:
  explicit Displays(Screens& screens);

  // Records the height of the first screen, 0 when there is none. Happens by itself at every change
  // of screen parameters; call it at launch and while blocking the main thread.
  void recordMainHeight();

  Flip flip() const { return flip_; }

  // The frames of all screens, in the system's order.
  std::vector<QuartzRect> frames() const;

  // The main screen without menu bar and Dock; nothing without screens.
  std::optional<QuartzRect> mainVisibleFrame() const;

  bool areLocked() const { return screens_.areLocked(); }

  // The part of the window's area that lies on the displays, from 0 to 1 (more where displays
  // overlap); nothing for a window without area.
  std::optional<double> visibleFraction(const QuartzRect& window) const;

  // The most that can be seen of a hidden window.
  static constexpr double hiddenFraction = 0.05;
  // Whether no more of the window can be seen, or it has no area.
  bool isHidden(const QuartzRect& window) const;

  // The display that holds most of the window; the first of equals, and the first of all when the
  // window touches none. Nothing without screens, or when the system gives it no number.
  std::optional<DisplayID> screenID(const QuartzRect& window) const;

 private:
  const Screens& screens_;
  Flip flip_;
  Subscription changes_;
};

}  // namespace pellow
