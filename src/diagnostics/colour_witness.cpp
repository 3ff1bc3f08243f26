#include "diagnostics/colour_witness.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "access/displays.h"
#include "capture/in_time.h"
#include "diagnostics/pause.h"

namespace pellow {
namespace {

constexpr double tolerance = 8;        // of 255
constexpr double enoughToJudge = 0.5;  // of the frame
constexpr int looksForWindow = 20;     // that has only come
constexpr int looksForAbsence = 5;
constexpr Seconds betweenLooks = 0.25;

bool hasColour(std::uint32_t pixel) {
  const auto isNear = [](double wanted, std::uint32_t byte) {
    return std::abs(wanted * 255 - byte) <= tolerance;
  };
  const auto& colour = ColourWitness::colour;
  return isNear(colour.red(), pixel >> 16 & 0xff) && isNear(colour.green(), pixel >> 8 & 0xff) &&
         isNear(colour.blue(), pixel & 0xff);
}

}  // namespace

Task<> ColourWitness::lookBefore() { before_ = (co_await countPoints()).value_or(0); }

Task<std::expected<void, SystemError>> ColourWitness::learn(QuartzRect frame) {
  const double enough = enoughToJudge * frame.area();
  density_ =
      co_await pointsInColour(looksForWindow, [=](double points) { return points >= enough; });
  if (density_ && *density_ < enough)
    density_ = std::unexpected(SystemError{"It does not show the window at its start."});
  if (!density_) co_return std::unexpected(density_.error());
  *density_ /= frame.area();
  co_return std::expected<void, SystemError>();
}

Task<std::expected<double, SystemError>> ColourWitness::paintedShare(QuartzRect frame) {
  if (!density_) co_return density_;
  const double whole = *density_ * frame.area();
  const auto points = co_await pointsInColour(
      looksForAbsence, [=](double each) { return each <= Displays::hiddenFraction * whole; });
  if (!points || whole <= 0) co_return points;
  co_return std::min(*points / whole, 1.0);
}

Task<ColourWitness::Points> ColourWitness::pointsInColour(
    int looksAtMost, std::function<bool(double points)> areExpected) {
  Points points;
  for (int look = 0; look < looksAtMost; ++look) {
    if (look > 0) co_await pause(mainQueue_, betweenLooks);
    points = co_await countPoints();
    if (!points) break;
    *points = std::max(0.0, *points - before_);
    if (areExpected(*points)) break;
  }
  co_return points;
}

Task<ColourWitness::Points> ColourWitness::countPoints() {
  using Picture = std::expected<DisplayPicture, SystemError>;
  if (!screenCapture_.preflightAccess())
    co_return std::unexpected(SystemError{"There is no Screen Recording permission."});
  double points = 0;
  for (const auto& screen : screens_.all()) {
    if (!screen.displayID) continue;
    const auto picture = co_await Answer<Picture>(inTime<Picture>(mainQueue_, [&](auto onDisplay) {
      return screenCapture_.captureDisplay(*screen.displayID, std::move(onDisplay));
    }));
    if (!picture) co_return std::unexpected(picture.error());
    points += static_cast<double>(std::ranges::count_if(picture->pixels, hasColour));
  }
  co_return points;
}

}  // namespace pellow
