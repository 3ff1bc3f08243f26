#include "platforms/linux/x11/left_state.h"

namespace pellow {

LeftState LeftState::of(const WindowFacts::State& state) {
  return {(state.maximizedHorizontally ? horizontal : 0) |
          (state.maximizedVertically ? vertical : 0) | (state.fullScreen ? fullScreen : 0) |
          (state.shaded ? shaded : 0)};
}

LeftState LeftState::remembered(const std::vector<std::uint32_t>& words) {
  LeftState left;
  if (!words.empty()) left.states = words[0];
  const auto point = [&](std::size_t index) {
    return PixelPoint{static_cast<int>(words[index]), static_cast<int>(words[index + 1])};
  };
  if (words.size() >= 3) left.origin = point(1);
  if (words.size() >= 5) left.parkedPlace = point(3);
  return left;
}

std::vector<std::uint32_t> LeftState::words() const {
  std::vector<std::uint32_t> result{states};
  const auto append = [&](PixelPoint point) {
    result.push_back(static_cast<std::uint32_t>(point.x));
    result.push_back(static_cast<std::uint32_t>(point.y));
  };
  if (origin) append(*origin);
  if (origin && parkedPlace) append(*parkedPlace);
  return result;
}

}  // namespace pellow
