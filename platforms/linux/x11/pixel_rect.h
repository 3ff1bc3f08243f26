#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace pellow {

struct PixelPoint {
  int x = 0;
  int y = 0;

  bool operator==(const PixelPoint&) const = default;
};

struct PixelSize {
  int width = 0;
  int height = 0;

  bool operator==(const PixelSize&) const = default;
};

// What X can say of a place or a length: sixteen bits. What other programs say in more is cut to
// that where it is read, so that sums of such numbers always fit.
constexpr int pixelCoordinate(std::uint32_t word) {
  return std::clamp<int>(static_cast<std::int32_t>(word), INT16_MIN, INT16_MAX);
}
constexpr int pixelLength(std::uint32_t word) {
  return static_cast<int>(std::min<std::uint32_t>(word, UINT16_MAX));
}

// A rectangle of the X screen: pixels of the root window, y down.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  bool operator==(const PixelRect&) const = default;

  PixelPoint origin() const { return {x, y}; }
  int maxX() const { return x + width; }
  int maxY() const { return y + height; }
  std::int64_t area() const { return std::int64_t{width} * height; }
  PixelRect at(PixelPoint origin) const { return {origin.x, origin.y, width, height}; }

  // Of size zero where the two do not meet.
  PixelRect intersection(const PixelRect& other) const {
    const int left = std::max(x, other.x);
    const int top = std::max(y, other.y);
    return {left, top, std::max(std::min(maxX(), other.maxX()) - left, 0),
            std::max(std::min(maxY(), other.maxY()) - top, 0)};
  }

  // What lies above, below, left and right of a part of it.
  std::array<PixelRect, 4> around(const PixelRect& part) const {
    return {{{x, y, width, part.y - y},
             {x, part.maxY(), width, maxY() - part.maxY()},
             {x, part.y, part.x - x, part.height},
             {part.maxX(), part.y, maxX() - part.maxX(), part.height}}};
  }
};

}  // namespace pellow
