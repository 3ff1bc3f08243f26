#pragma once

#include <string_view>

namespace pellow {

// At once. Whoever should read it may have gone away.
void printLine(std::string_view line);

}  // namespace pellow
