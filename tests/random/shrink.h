#pragma once

#include <functional>

#include "tests/random/history.h"

namespace pellow::random {

// The history as short and its numbers as small as they become while `stillFails` holds: steps are
// left out, in large chunks first, then one by one, then numbers are made smaller. Asks at most
// `effort` times.
History shrink(History history, const std::function<bool(const History&)>& stillFails,
               int effort = 3000);

}  // namespace pellow::random
