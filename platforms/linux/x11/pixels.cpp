#include "platforms/linux/x11/pixels.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace pellow {

namespace {

using Sums = std::array<std::uint64_t, 4>;  // one for each byte of a pixel

// A stretch of the source in units of 1/`to` of a pixel, so that all of it is whole numbers: the
// pixel `i` of `to` stands for [i·from, (i+1)·from), and the source pixel `j` is [j·to, (j+1)·to).
struct Share {
  int pixel = 0;
  std::uint64_t weight = 0;
};

class Axis {
 public:
  Axis(int from, int to) : from_(from), to_(to) {}

  template <class Visit>
  void forEachShare(int target, Visit visit) const {
    const auto begin = std::int64_t{target} * from_;
    const auto end = begin + from_;
    for (auto pixel = begin / to_; pixel * to_ < end; ++pixel) {
      const auto overlap = std::min(end, (pixel + 1) * to_) - std::max(begin, pixel * to_);
      visit(Share{static_cast<int>(pixel), static_cast<std::uint64_t>(overlap)});
    }
  }

 private:
  std::int64_t from_;
  std::int64_t to_;
};

void add(Sums& sums, std::uint32_t pixel, std::uint64_t weight) {
  for (std::size_t byte = 0; byte < sums.size(); ++byte)
    sums[byte] += weight * (pixel >> (8 * byte) & 0xff);
}

std::uint32_t average(const Sums& sums, std::uint64_t total) {
  std::uint32_t pixel = 0;
  for (std::size_t byte = 0; byte < sums.size(); ++byte)
    pixel |= static_cast<std::uint32_t>((sums[byte] + total / 2) / total) << (8 * byte);
  return pixel;
}

}  // namespace

Pixels scaled(const Pixels& picture, PixelSize size) {
  if (size == picture.size) return picture;
  const Axis across(picture.size.width, size.width);
  const Axis down(picture.size.height, size.height);
  const auto total = std::uint64_t(picture.size.width) * std::uint64_t(picture.size.height);
  Pixels result{size, {}};
  result.values.reserve(std::size_t(size.width) * std::size_t(size.height));
  std::vector<Sums> row(std::size_t(size.width));
  for (int y = 0; y < size.height; ++y) {
    std::ranges::fill(row, Sums{});
    down.forEachShare(y, [&](const Share& line) {
      const auto* source = &picture.values[std::size_t(line.pixel) * picture.size.width];
      for (int x = 0; x < size.width; ++x)
        across.forEachShare(x, [&](const Share& share) {
          add(row[std::size_t(x)], source[share.pixel], line.weight * share.weight);
        });
    });
    for (const auto& sums : row) result.values.push_back(average(sums, total));
  }
  return result;
}

std::vector<std::uint32_t> withoutPremultiplication(const Pixels& picture) {
  auto values = picture.values;
  for (auto& pixel : values) {
    const std::uint32_t alpha = pixel >> 24;
    if (alpha == 0xff) continue;
    std::uint32_t plain = alpha << 24;
    for (int shift = 0; alpha != 0 && shift < 24; shift += 8) {
      const std::uint32_t colour = ((pixel >> shift & 0xff) * 0xff + alpha / 2) / alpha;
      plain |= std::min(colour, 0xffu) << shift;
    }
    pixel = plain;
  }
  return values;
}

}  // namespace pellow
