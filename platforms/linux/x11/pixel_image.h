#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/image.h"

namespace pellow {

// A picture as plain pixels.
class PixelImage : public Image::Object {
 public:
  // `pixels` are 0xAARRGGBB, not premultiplied, row by row from the top, width x height of them.
  // `size` is what they measure in points.
  PixelImage(int width, int height, std::vector<std::uint32_t> pixels, Size size)
      : width_(width), height_(height), pixels_(std::move(pixels)), size_(size) {}

  // The picture of a _NET_WM_ICON property that fits best where icons are shown; nothing when the
  // property holds none.
  static std::optional<Image> fromIconProperty(const std::vector<std::uint32_t>& property,
                                               double scale);

  Size size() const override { return size_; }
  int width() const { return width_; }    // pixels
  int height() const { return height_; }  // pixels
  const std::vector<std::uint32_t>& pixels() const { return pixels_; }

 private:
  int width_;
  int height_;
  std::vector<std::uint32_t> pixels_;
  Size size_;
};

}  // namespace pellow
