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
  PixelImage(int width, int height, std::vector<std::uint32_t> pixels, double scale)
      : width_(width), height_(height), pixels_(std::move(pixels)), scale_(scale) {}

  // The picture of a _NET_WM_ICON property that fits best where icons are shown; nothing when the
  // property holds none.
  static std::optional<Image> fromIconProperty(const std::vector<std::uint32_t>& property,
                                               double scale);

  Size size() const override { return {width_ / scale_, height_ / scale_}; }
  int width() const { return width_; }    // pixels
  int height() const { return height_; }  // pixels
  const std::vector<std::uint32_t>& pixels() const { return pixels_; }

 private:
  int width_;
  int height_;
  std::vector<std::uint32_t> pixels_;
  double scale_;
};

}  // namespace pellow
