#pragma once

#include <string>

namespace pellow {

// The value of a variable; empty when it is not set. Any thread.
std::string environment(const char* name);

}  // namespace pellow
