#pragma once

#include <functional>

#include "base/colour.h"
#include "base/subscription.h"

namespace pellow {

// The system's one panel to choose a colour with. Main thread.
class ColourPanel {
 public:
  virtual ~ColourPanel() = default;

  // Shows the panel with this colour, in front, and calls `onChange` for every colour that the user
  // tries, until the subscription ends, the panel is closed, or somebody else shows it.
  virtual Subscription show(Colour colour, std::function<void(Colour)> onChange) = 0;
};

}  // namespace pellow
