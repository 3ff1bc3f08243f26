#pragma once

#include "base/colour.h"
#include "platform/paint.h"

namespace pellow {

// The system's colours in numbers, for those who calculate with them; what is shown takes a
// `Paint`. Main thread.
class SystemColours {
 public:
  virtual ~SystemColours() = default;

  // What the colour looks like now, in the light or dark shade of the desktop. The labels may be
  // translucent.
  virtual Colour resolve(SystemColour colour) const = 0;
};

}  // namespace pellow
