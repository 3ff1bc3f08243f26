#pragma once

#include <cstdint>
#include <vector>

#include "platforms/linux/x11/pixel_rect.h"

namespace pellow {

// A picture to work on: 0xAARRGGBB, the colours multiplied by alpha, row by row from the top.
struct Pixels {
  PixelSize size;
  std::vector<std::uint32_t> values;

  bool operator==(const Pixels&) const = default;
};

// The same picture in another size: each pixel is the average of all that it stands for, so that
// thin lines and small text turn grey rather than vanish.
Pixels scaled(const Pixels& picture, PixelSize size);

// The values with the colours divided by alpha again.
std::vector<std::uint32_t> withoutPremultiplication(const Pixels& picture);

}  // namespace pellow
