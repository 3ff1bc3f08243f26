#include "views/view_transform.h"

#include <cmath>
#include <numbers>

namespace pellow {
namespace {

double stretchOf(double content, double panel) {
  const bool isUsable = content > 0 && panel > 0;
  return !isUsable || std::abs(panel - content) < 1 ? 1 : panel / content;
}

}  // namespace

ViewTransform ViewTransform::placement(const ViewRect& frame, double rotation) {
  if (rotation == 0) return {.tx = frame.minX(), .ty = frame.minY()};
  const double angle = rotation * std::numbers::pi / 180;
  const double cos = std::cos(angle);
  const double sin = std::sin(angle);
  const double x = frame.width() / 2;
  const double y = frame.height() / 2;
  return {.a = cos,
          .b = sin,
          .c = -sin,
          .d = cos,
          .tx = frame.midX() - cos * x + sin * y,
          .ty = frame.midY() - sin * x - cos * y};
}

ViewTransform ViewTransform::then(const ViewTransform& next) const {
  const auto origin = next.map(ViewPoint{tx, ty});
  return {.a = next.a * a + next.c * b,
          .b = next.b * a + next.d * b,
          .c = next.a * c + next.c * d,
          .d = next.b * c + next.d * d,
          .tx = origin.x,
          .ty = origin.y};
}

ViewPoint ViewTransform::map(ViewPoint point) const {
  return {a * point.x + c * point.y + tx, b * point.x + d * point.y + ty};
}

ViewRect ViewTransform::map(const ViewRect& rect) const {
  const bool isUpright = b == 0 && c == 0 && a >= 0 && d >= 0;
  if (isUpright) return {map(rect.origin), {a * rect.width(), d * rect.height()}};
  const double width = std::abs(a) * rect.width() + std::abs(c) * rect.height();
  const double height = std::abs(b) * rect.width() + std::abs(d) * rect.height();
  const auto centre = map(ViewPoint{rect.midX(), rect.midY()});
  return {centre.x - width / 2, centre.y - height / 2, width, height};
}

ViewPoint ViewTransform::mapBack(ViewPoint point) const {
  const double x = point.x - tx;
  const double y = point.y - ty;
  const double determinant = a * d - b * c;
  return {(d * x - c * y) / determinant, (a * y - b * x) / determinant};
}

Stretch Stretch::between(Size content, Size panel) {
  return {stretchOf(content.width, panel.width), stretchOf(content.height, panel.height)};
}

ViewRect Stretch::toPanel(const ViewRect& inContent) const {
  return {toPanel(inContent.origin), {inContent.width() * x, inContent.height() * y}};
}

}  // namespace pellow
