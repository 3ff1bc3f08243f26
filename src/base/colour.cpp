#include "base/colour.h"

#include <charconv>
#include <cstdint>

#include <fmt/format.h>

namespace pellow {
namespace {

double component(std::uint32_t rgb, int shift) { return (rgb >> shift & 0xFF) / 255.0; }

// A parsed colour must print as the same text, so a byte divided by 255 must survive the
// truncation.
std::uint32_t byteOf(double component) { return static_cast<std::uint32_t>(component * 255); }

}  // namespace

std::optional<Colour> Colour::parse(std::string_view text) {
  if (text.starts_with('#')) text.remove_prefix(1);
  if (text.size() != 6) return std::nullopt;
  if (text.starts_with('+')) text.remove_prefix(1);
  std::uint32_t rgb = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rgb, 16);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return Colour{component(rgb, 16), component(rgb, 8), component(rgb, 0)};
}

std::string Colour::text() const {
  return fmt::format("#{:06X}", byteOf(red_) << 16 | byteOf(green_) << 8 | byteOf(blue_));
}

}  // namespace pellow
