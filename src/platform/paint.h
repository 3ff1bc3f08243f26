#pragma once

#include <variant>

#include "base/colour.h"

namespace pellow {

// A colour of the system, in the shade that suits its light or dark look at the moment.
enum class SystemColour {
  label,
  secondaryLabel,
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

// What something is drawn in: the same colour always, or one of the system's.
using Paint = std::variant<Colour, SystemColour>;

}  // namespace pellow
