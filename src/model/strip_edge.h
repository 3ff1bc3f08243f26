#pragma once

#include "base/raw_value.h"

namespace pellow {

// The side of a display that a strip is snapped to.
enum class StripEdge { left, right, top, bottom };

template <>
struct RawValues<StripEdge> {
  static constexpr std::array<std::string_view, 4> texts{"left", "right", "top", "bottom"};
};

// Whether a strip at this edge runs from left to right.
constexpr bool isHorizontalStrip(StripEdge edge) {
  return edge == StripEdge::top || edge == StripEdge::bottom;
}

}  // namespace pellow
