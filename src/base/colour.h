#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pellow {

// A colour in sRGB; components from 0 to 1.
struct Colour {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  bool operator==(const Colour&) const = default;

  // "#1A2B3C" in either case, with or without the number sign. As the integer parser behind it
  // reads a leading plus sign, "+A2B3C" is a colour too. Anything else is none.
  static std::optional<Colour> parse(std::string_view text);

  // "#1A2B3C", each component truncated to a byte; alpha is left out.
  std::string text() const;
};

}  // namespace pellow
