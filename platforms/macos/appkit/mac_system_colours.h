#pragma once

#include "platform/system_colours.h"

namespace pellow {

// In the appearance of the application. A colour that sRGB cannot tell is middle grey, which can be
// seen in both.
class MacSystemColours final : public SystemColours {
 public:
  Colour resolve(SystemColour colour) const override;
};

}  // namespace pellow
