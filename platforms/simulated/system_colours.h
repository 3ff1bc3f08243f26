#pragma once

#include "platform/system_colours.h"

namespace pellow::simulated {

// No desktop's colours, but each unlike all others.
class SystemColours final : public pellow::SystemColours {
 public:
  Colour resolve(SystemColour colour) const override {
    return {static_cast<double>(colour) / 16, 0, isDark ? 1.0 : 0.0};
  }

  bool isDark = false;
};

}  // namespace pellow::simulated
