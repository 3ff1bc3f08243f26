#include "platforms/linux/x11/text_encoding.h"

#include <cstdint>
#include <optional>

namespace pellow {

namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

struct LeadByte {
  std::size_t length = 0;      // of the whole character
  std::uint32_t bits = 0;      // that the lead byte carries
  std::uint32_t smallest = 0;  // character that needs this length
};

std::optional<LeadByte> decodeLead(unsigned char byte) {
  if (byte < 0x80) return LeadByte{1, byte, 0};
  if ((byte & 0xe0) == 0xc0) return LeadByte{2, byte & 0x1fu, 0x80};
  if ((byte & 0xf0) == 0xe0) return LeadByte{3, byte & 0x0fu, 0x800};
  if ((byte & 0xf8) == 0xf0) return LeadByte{4, byte & 0x07u, 0x10000};
  return std::nullopt;
}

// The length of the valid character at the front; 0 when there is none.
std::size_t validLength(std::string_view text) {
  const auto lead = decodeLead(static_cast<unsigned char>(text.front()));
  if (!lead || lead->length > text.size()) return 0;
  std::uint32_t codePoint = lead->bits;
  for (std::size_t i = 1; i < lead->length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xc0) != 0x80) return 0;
    codePoint = codePoint << 6 | (byte & 0x3fu);
  }
  const bool isSurrogate = codePoint >= 0xd800 && codePoint < 0xe000;
  const bool isValid = codePoint >= lead->smallest && codePoint <= 0x10ffff && !isSurrogate;
  return isValid ? lead->length : 0;
}

}  // namespace

std::string validUTF8(std::string_view text) {
  std::string valid;
  valid.reserve(text.size());
  while (!text.empty()) {
    const auto length = validLength(text);
    valid += length ? text.substr(0, length) : replacementCharacter;
    text.remove_prefix(length ? length : 1);
  }
  return valid;
}

std::string utf8FromLatin1(std::string_view bytes) {
  std::string text;
  for (const auto byte : bytes) {
    const auto number = static_cast<unsigned char>(byte);
    if (number < 0x80) {
      text += byte;
    } else {
      text += static_cast<char>(0xc0 | number >> 6);
      text += static_cast<char>(0x80 | (number & 0x3f));
    }
  }
  return text;
}

}  // namespace pellow
