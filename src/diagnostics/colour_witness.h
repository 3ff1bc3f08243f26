#pragma once

#include <expected>
#include <functional>

#include "base/colour.h"
#include "base/geometry.h"
#include "base/task.h"
#include "platform/queues.h"
#include "platform/screen_capture.h"
#include "platform/screens.h"
#include "platform/system_error.h"

namespace pellow {

// Tells by its colour how much of a window is painted on the displays, whatever coordinates say.
// Main thread.
class ColourWitness {
 public:
  static constexpr Colour colour{0.90, 0.18, 0.54};  // seldom found elsewhere

  ColourWitness(MainQueue& mainQueue, ScreenCapture& screenCapture, Screens& screens)
      : mainQueue_(mainQueue), screenCapture_(screenCapture), screens_(screens) {}

  // Before the window is there: what has its colour already counts for nothing.
  Task<> lookBefore();

  // While all of the window can be seen: learns how much of its frame has the colour. An error if
  // the pictures do not show it.
  Task<std::expected<void, SystemError>> learn(QuartzRect frame);

  // Which part of the window is painted now, from 0 to 1; the frame says how large it is. An error
  // if `learn` or the picture failed.
  Task<std::expected<double, SystemError>> paintedShare(QuartzRect frame);

 private:
  using Points = std::expected<double, SystemError>;

  // Until there are as many as expected, since whoever paints the screen may be late, or after so
  // many looks.
  Task<Points> pointsInColour(int looksAtMost, std::function<bool(double points)> areExpected);
  Task<Points> countPoints();

  MainQueue& mainQueue_;
  ScreenCapture& screenCapture_;
  Screens& screens_;
  double before_ = 0;                               // points
  std::expected<double, SystemError> density_ = 0;  // points in the colour for one of the frame
};

}  // namespace pellow
