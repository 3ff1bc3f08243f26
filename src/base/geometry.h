#pragma once

#include <algorithm>

// Rectangles and points of doubles, in points, tagged with the space they live in.
//
//   Quartz space                          AppKit space
//   (0,0)────────▶ x                      y ▲
//     │  primary display                    │  primary display
//     ▼ y                                 (0,0)────────▶ x
//
// Accessibility speaks Quartz, screens and panels speak AppKit, and the insides of a panel are in
// View space (y up from the bottom left of the parent view). Mixing two spaces does not compile;
// `Flip` is the one door between Quartz and AppKit.

namespace pellow {

struct QuartzSpace {};
struct AppKitSpace {};
struct ViewSpace {};

struct Size {
  double width = 0;
  double height = 0;

  bool operator==(const Size&) const = default;
};

// A displacement: the same in every space whose axes point the same way.
template <class Space>
struct BasicVector {
  double dx = 0;
  double dy = 0;

  bool operator==(const BasicVector&) const = default;
};

template <class Space>
struct BasicPoint {
  double x = 0;
  double y = 0;

  bool operator==(const BasicPoint&) const = default;

  friend BasicPoint operator+(BasicPoint point, BasicVector<Space> by) {
    return {point.x + by.dx, point.y + by.dy};
  }
  friend BasicVector<Space> operator-(BasicPoint to, BasicPoint from) {
    return {to.x - from.x, to.y - from.y};
  }
};

template <class Space>
struct BasicRect {
  BasicPoint<Space> origin;
  Size size;

  constexpr BasicRect() = default;
  constexpr BasicRect(BasicPoint<Space> rectOrigin, Size rectSize)
      : origin(rectOrigin), size(rectSize) {}
  constexpr BasicRect(double x, double y, double width, double height)
      : origin{x, y}, size{width, height} {}

  bool operator==(const BasicRect&) const = default;

  double minX() const { return origin.x; }
  double minY() const { return origin.y; }
  double maxX() const { return origin.x + size.width; }
  double maxY() const { return origin.y + size.height; }
  double midX() const { return origin.x + size.width / 2; }
  double midY() const { return origin.y + size.height / 2; }
  double width() const { return size.width; }
  double height() const { return size.height; }
  double area() const { return size.width * size.height; }

  // Includes the minimum sides, excludes the maximum ones, so that tiles share no point.
  bool contains(BasicPoint<Space> point) const {
    return point.x >= minX() && point.x < maxX() && point.y >= minY() && point.y < maxY();
  }

  // The smallest rectangle around both.
  BasicRect united(const BasicRect& other) const {
    const double x = std::min(minX(), other.minX());
    const double y = std::min(minY(), other.minY());
    return {x, y, std::max(maxX(), other.maxX()) - x, std::max(maxY(), other.maxY()) - y};
  }

  // The area that both rectangles cover; 0 when they do not meet.
  double intersectionArea(const BasicRect& other) const {
    const double across = std::min(maxX(), other.maxX()) - std::max(minX(), other.minX());
    const double down = std::min(maxY(), other.maxY()) - std::max(minY(), other.minY());
    return across > 0 && down > 0 ? across * down : 0;
  }
};

using QuartzPoint = BasicPoint<QuartzSpace>;
using QuartzRect = BasicRect<QuartzSpace>;
using AppKitPoint = BasicPoint<AppKitSpace>;
using AppKitRect = BasicRect<AppKitSpace>;
using AppKitVector = BasicVector<AppKitSpace>;
using ViewPoint = BasicPoint<ViewSpace>;
using ViewRect = BasicRect<ViewSpace>;

// Turns Quartz rectangles into AppKit ones and back, by the height of the primary display.
struct Flip {
  double primaryHeight = 0;  // points

  QuartzRect toQuartz(const AppKitRect& rect) const {
    return {rect.minX(), primaryHeight - rect.maxY(), rect.width(), rect.height()};
  }
  QuartzPoint toQuartz(AppKitPoint point) const { return {point.x, primaryHeight - point.y}; }
  AppKitRect toAppKit(const QuartzRect& rect) const {
    return {rect.minX(), primaryHeight - rect.maxY(), rect.width(), rect.height()};
  }
};

}  // namespace pellow
