#pragma once

#include "base/raw_value.h"

namespace pellow {

// What one pellow puts away.
enum class TabScope {
  window,  // one window becomes one tab
  app,     // all standard windows of the application together
};

template <>
struct RawValues<TabScope> {
  static constexpr std::array<std::string_view, 2> texts{"window", "app"};
};

}  // namespace pellow
