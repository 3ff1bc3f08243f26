#include "engine/parking_places.h"

#include <algorithm>

namespace pellow {
namespace {

constexpr double sliverWidth = 1;
constexpr double sliverHeight = 28;
constexpr double enoughToStay = 0.6;

}  // namespace

StripEdge parkingSide(const TabZone& zone) {
  if (zone.snap == StripEdge::left || zone.snap == StripEdge::right) return *zone.snap;
  return zone.position.x >= 0.5 ? StripEdge::right : StripEdge::left;
}

QuartzPoint ParkingPlaces::parkOrigin(const QuartzRect& frame, StripEdge edge) const {
  const auto screens = displays_.frames();
  if (screens.empty()) return frame.origin;
  const auto y = [](const QuartzRect& screen) {
    return std::max(screen.minY(), screen.maxY() - sliverHeight);
  };
  if (edge == StripEdge::left) {
    const auto& leftmost = *std::ranges::min_element(screens, {}, &QuartzRect::minX);
    return {leftmost.minX() + sliverWidth - frame.width(), y(leftmost)};
  }
  const auto& rightmost = *std::ranges::max_element(screens, {}, &QuartzRect::maxX);
  return {rightmost.maxX() - sliverWidth, y(rightmost)};
}

bool ParkingPlaces::canStay(const QuartzRect& frame) const {
  return displays_.visibleFraction(frame).value_or(0) >= enoughToStay;
}

QuartzPoint ParkingPlaces::restoreOrigin(const QuartzRect& frame) const {
  return canStay(frame) ? frame.origin : onScreenOrigin(frame).value_or(frame.origin);
}

QuartzPoint ParkingPlaces::restoreOrigin(const QuartzRect& frame, const Log& log) const {
  if (!canStay(frame)) log.info("Original frame is no longer on a display; clamping the restore");
  return restoreOrigin(frame);
}

std::optional<QuartzPoint> ParkingPlaces::onScreenOrigin(const QuartzRect& frame) const {
  const auto visible = displays_.mainVisibleFrame();
  if (!visible) return std::nullopt;
  const auto lastX = std::max(visible->minX(), visible->maxX() - frame.width());
  const auto lastY = std::max(visible->minY(), visible->maxY() - frame.height());
  return QuartzPoint{std::min(lastX, std::max(frame.minX(), visible->minX())),
                     std::min(lastY, std::max(frame.minY(), visible->minY()))};
}

}  // namespace pellow
