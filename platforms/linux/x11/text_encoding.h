#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pellow {

// The text with invalid UTF-8 replaced by U+FFFD, so that it can be stored anywhere.
std::string validUTF8(std::string_view text);

// Bytes in a character set that iconv knows, such as "ISO-8859-1"; empty when they are not valid in
// it.
std::string utf8From(const char* characterSet, std::string_view bytes);

// One character.
std::string utf8FromCodePoint(std::uint32_t codePoint);

}  // namespace pellow
