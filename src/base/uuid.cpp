#include "base/uuid.h"

namespace pellow {
namespace {

constexpr std::string_view digits = "0123456789ABCDEF";

// "8-4-4-4-12": a hyphen stands before these bytes.
constexpr bool hyphenBefore(std::size_t byte) {
  return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

std::optional<std::uint8_t> nibble(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return std::nullopt;
}

}  // namespace

std::string UUID::text() const {
  std::string text(36, '-');
  std::size_t at = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (hyphenBefore(i)) ++at;
    text[at++] = digits[bytes[i] >> 4];
    text[at++] = digits[bytes[i] & 0xF];
  }
  return text;
}

std::optional<UUID> UUID::parse(std::string_view text) {
  if (text.size() != 36) return std::nullopt;
  UUID uuid;
  std::size_t at = 0;
  for (std::size_t i = 0; i < uuid.bytes.size(); ++i) {
    if (hyphenBefore(i) && text[at++] != '-') return std::nullopt;
    const auto high = nibble(text[at++]);
    const auto low = nibble(text[at++]);
    if (!high || !low) return std::nullopt;
    uuid.bytes[i] = static_cast<std::uint8_t>(*high << 4 | *low);
  }
  return uuid;
}

}  // namespace pellow
