#pragma once

#include <functional>

#include "base/colour.h"
#include "base/subscription.h"

namespace pellow {

// The system's one colour panel. Main thread.
class ColourPanel {
 public:
  virtual ~ColourPanel() = default;

  // Shows the panel in front with this colour and calls `onChange` for every colour the user tries,
  // until the subscription ends, the panel is closed or another caller shows it.
  virtual Subscription show(Colour colour, std::function<void(Colour)> onChange) = 0;
};

}  // namespace pellow
