#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "base/geometry.h"
#include "base/subscription.h"

namespace pellow {

using DisplayID = std::uint32_t;

struct Screen {
  std::optional<DisplayID> displayID;  // absent when the system gives none
  AppKitRect frame;
  AppKitRect visibleFrame;  // the frame without menu bar and Dock

  bool operator==(const Screen&) const = default;
};

// The first of those that hold the largest part of the frame; none when there are no screens.
inline const Screen* screenWithMostOf(const AppKitRect& frame, const std::vector<Screen>& screens) {
  const auto most = std::ranges::max_element(
      screens, {}, [&](const Screen& screen) { return screen.frame.intersectionArea(frame); });
  return most == screens.end() ? nullptr : &*most;
}

// The displays. The first is the primary one, at the origin of AppKit space. Main thread.
class Screens {
 public:
  virtual ~Screens() = default;

  // In the system's order; empty while no display is connected.
  virtual std::vector<Screen> all() const = 0;

  // The screen of the window with the keyboard, else the primary one; nothing without screens.
  virtual std::optional<Screen> main() const = 0;

  // Whether the lock of the screen covers them: nobody should see anything beside it.
  virtual bool areLocked() const = 0;

  // Called after every change of displays, frames and visible frames.
  virtual Subscription onDidChangeParameters(std::function<void()> observer) = 0;
};

}  // namespace pellow
