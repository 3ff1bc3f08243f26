#pragma once

#include <functional>

#include "tests/random/history.h"

namespace pellow::random {

// The shortest history with the smallest numbers found for which `stillFails` holds: leaves out
// steps in large chunks, then one by one, then makes numbers smaller. Asks at most `effort` times.
History shrink(History history, const std::function<bool(const History&)>& stillFails,
               int effort = 3000);

}  // namespace pellow::random
