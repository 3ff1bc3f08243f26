#pragma once

#include <string>

#include "base/geometry.h"
#include "platform/view.h"

namespace pellow {

// A zone's name, centred in its band. `rotated` reads from bottom to top, for a band down the side.
View zoneNameView(std::string text, const ViewRect& band, bool rotated);

}  // namespace pellow
