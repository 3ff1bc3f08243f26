#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace pellow {

// The identity of a tab or a zone. New ones come from the platform (`UUIDSource`), so that a
// simulated run repeats itself exactly.
struct UUID {
  std::array<std::uint8_t, 16> bytes{};

  bool operator==(const UUID&) const = default;
  std::strong_ordering operator<=>(const UUID& other) const {
    return std::memcmp(bytes.data(), other.bytes.data(), bytes.size()) <=> 0;
  }

  // The standard text, upper case: "6BA7B810-9DAD-11D1-80B4-00C04FD430C8".
  std::string text() const;

  // Reads the standard text in either case; nothing for any other text.
  static std::optional<UUID> parse(std::string_view text);
};

}  // namespace pellow

template <>
struct std::hash<pellow::UUID> {
  std::size_t operator()(const pellow::UUID& uuid) const noexcept {
    return std::hash<std::string_view>{}(
        {reinterpret_cast<const char*>(uuid.bytes.data()), uuid.bytes.size()});
  }
};
