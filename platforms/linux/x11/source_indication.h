#pragma once

#include <cstdint>

namespace pellow {

// Who wants what the window manager is asked for, as EWMH has it.
inline constexpr std::uint32_t sourceApplication = 1;
inline constexpr std::uint32_t sourcePager = 2;  // the user, through this program

}  // namespace pellow
