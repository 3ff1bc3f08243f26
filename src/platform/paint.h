#pragma once

#include <variant>

#include "base/colour.h"

namespace pellow {

// A system colour, in the shade for the current light or dark look.
enum class SystemColour {
  label,
  secondaryLabel,
  separator,
  accent,
  red,
  orange,
  yellow,
  green,
  blue,
  purple,
  pink,
  grey,
};

// What something is drawn in: a fixed colour or a system one.
using Paint = std::variant<Colour, SystemColour>;

}  // namespace pellow
