#pragma once

#include "platform/system_colours.h"

namespace pellow {

// The shades that panels are drawn in, by the application's palette.
class QtSystemColours final : public SystemColours {
 public:
  Colour resolve(SystemColour colour) const override;
};

}  // namespace pellow
