#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

// Enumerations whose cases are stored and exchanged as text. Such an enumeration counts its cases
// from 0 and specialises `RawValues`:
//
//   template <>
//   struct RawValues<StripEdge> {
//     static constexpr std::array<std::string_view, 4> texts{"left", "right", "top", "bottom"};
//   };

namespace pellow {

template <class Enum>
struct RawValues;

template <class Enum>
constexpr std::string_view rawValue(Enum value) {
  return RawValues<Enum>::texts[static_cast<std::size_t>(std::to_underlying(value))];
}

// The case with exactly this text, if any.
template <class Enum>
constexpr std::optional<Enum> fromRawValue(std::string_view text) {
  const auto& texts = RawValues<Enum>::texts;
  for (std::size_t i = 0; i < texts.size(); ++i)
    if (texts[i] == text) return static_cast<Enum>(i);
  return std::nullopt;
}

// Every case, in order.
template <class Enum>
constexpr auto allCases() {
  std::array<Enum, RawValues<Enum>::texts.size()> cases{};
  for (std::size_t i = 0; i < cases.size(); ++i) cases[i] = static_cast<Enum>(i);
  return cases;
}

}  // namespace pellow
