#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pellow {

// The first character of a UTF-8 text; nothing when the text is empty or not UTF-8.
std::optional<char32_t> firstScalar(std::string_view utf8);

// The text in the other case, as far as keyboards go: Latin, Greek, Cyrillic and Armenian letters
// ("ß" becomes "SS"). Everything else, broken UTF-8 included, stays as it is.
std::string upperCased(std::string_view utf8);
std::string lowerCased(std::string_view utf8);

// The text as one line: control characters are spelled out, as "\n" or "\x1B" in source.
std::string oneLine(std::string_view utf8);

// The text without the white space at both ends.
std::string_view trimmed(std::string_view utf8);

}  // namespace pellow
