#pragma once

#include <cstdint>

namespace pellow {

// Who wants what the window manager is asked for, as EWMH has it: "the user wants this".
inline constexpr std::uint32_t sourcePager = 2;

}  // namespace pellow
