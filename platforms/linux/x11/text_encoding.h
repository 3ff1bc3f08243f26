#pragma once

#include <string>
#include <string_view>

namespace pellow {

// The text with invalid UTF-8 replaced by U+FFFD, so that it can be stored anywhere.
std::string validUTF8(std::string_view text);

// Each byte of ISO-8859-1 is the character of its number.
std::string utf8FromLatin1(std::string_view bytes);

}  // namespace pellow
