#pragma once

#include <string>

#include "platform/clock.h"

namespace pellow {

// How long ago something was, in the largest unit that fits: "2 hours ago", "1 minute ago".
std::string relativeDate(Seconds ago);

}  // namespace pellow
