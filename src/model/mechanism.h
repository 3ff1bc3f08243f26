#pragma once

#include "base/raw_value.h"

namespace pellow {

// How a window is put away, in the order the user is offered.
enum class Mechanism {
  minimize,   // minimized to the Dock
  offscreen,  // slid off the side of the display arrangement
  hideApp,    // its whole application hidden
};

template <>
struct RawValues<Mechanism> {
  static constexpr std::array<std::string_view, 3> texts{"minimize", "offscreen", "hideApp"};
};

}  // namespace pellow
