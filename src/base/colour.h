#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace pellow {

// A colour in sRGB; components from 0 to 1. Values outside, as other colour spaces have them, are
// clamped.
class Colour {
 public:
  constexpr Colour() = default;
  constexpr Colour(double red, double green, double blue, double alpha = 1)
      : red_(nearest(red)), green_(nearest(green)), blue_(nearest(blue)), alpha_(nearest(alpha)) {}

  double red() const { return red_; }
  double green() const { return green_; }
  double blue() const { return blue_; }
  double alpha() const { return alpha_; }
  Colour withAlpha(double alpha) const { return {red_, green_, blue_, alpha}; }

  bool operator==(const Colour&) const = default;

  // "#1A2B3C" in either case, with or without the number sign. "+A2B3C" is a colour too, as the
  // integer parser behind it reads a plus sign. Anything else is none.
  static std::optional<Colour> parse(std::string_view text);

  // "#1A2B3C", each component truncated to a byte; alpha is left out.
  std::string text() const;

 private:
  // NaN becomes 0, too.
  static constexpr double nearest(double value) { return value > 0 ? std::min(value, 1.0) : 0; }

  double red_ = 0;
  double green_ = 0;
  double blue_ = 0;
  double alpha_ = 1;
};

}  // namespace pellow
