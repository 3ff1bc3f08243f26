#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platforms/linux/x11/x11_window.h"

namespace pellow {

// What _PELLOW_STATE holds: which states the window has left, whether it was put away and whether
// it has arrived there, and, once known, where the window's frame stood without these states and
// where it was put.
struct LeftState {
  static constexpr std::uint32_t horizontal = 1;
  static constexpr std::uint32_t vertical = 2;
  static constexpr std::uint32_t fullScreen = 4;
  static constexpr std::uint32_t shaded = 8;
  static constexpr std::uint32_t shadedUntilIconified = 16;
  static constexpr std::uint32_t putAway = WindowFacts::putAway;
  static constexpr std::uint32_t onItsWay = 64;

  std::uint32_t states = 0;
  std::optional<PixelPoint> origin;
  std::optional<PixelPoint> parkedPlace;  // only beside an origin

  bool operator==(const LeftState&) const = default;

  // The states that a window is in, as those it could leave.
  static LeftState of(const WindowFacts::State& state);
  // Whether it is one in which a window does not move, or not well.
  bool isFixed() const { return states & (horizontal | vertical | fullScreen | shaded); }

  // The contents of the property.
  static LeftState remembered(const std::vector<std::uint32_t>& words);
  std::vector<std::uint32_t> words() const;
};

}  // namespace pellow
