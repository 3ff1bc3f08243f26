#include "platforms/linux/x11/pixel_image.h"

#include <memory>
#include <span>

namespace pellow {

namespace {

constexpr std::uint32_t wantedSide = 128;  // pixels; more than any place shows
constexpr std::uint32_t largestSide = 4096;

struct Icon {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::span<const std::uint32_t> pixels;
};

// The smallest that is large enough, else the largest.
bool fitsBetter(const Icon& icon, const Icon& best) {
  if (best.width == 0) return true;
  if (best.width < wantedSide) return icon.width > best.width;
  return icon.width >= wantedSide && icon.width < best.width;
}

}  // namespace

std::optional<Image> PixelImage::fromIconProperty(const std::vector<std::uint32_t>& property,
                                                  double scale) {
  Icon best;
  std::span<const std::uint32_t> rest = property;
  while (rest.size() > 2) {
    const std::uint32_t width = rest[0];
    const std::uint32_t height = rest[1];
    rest = rest.subspan(2);
    if (width == 0 || height == 0 || width > largestSide || height > largestSide) break;
    const auto count = std::size_t{width} * height;
    if (count > rest.size()) break;
    const Icon icon{width, height, rest.first(count)};
    if (fitsBetter(icon, best)) best = icon;
    rest = rest.subspan(count);
  }
  if (best.width == 0) return std::nullopt;
  return Image(std::make_shared<PixelImage>(static_cast<int>(best.width),
                                            static_cast<int>(best.height),
                                            std::vector(best.pixels.begin(), best.pixels.end()),
                                            Size{best.width / scale, best.height / scale}));
}

}  // namespace pellow
