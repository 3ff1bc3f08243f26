#include "base/unicode.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace pellow {
namespace {

struct Decoded {
  char32_t scalar;
  std::size_t length;  // bytes
};

constexpr std::array<char32_t, 5> smallestOfLength{0, 0, 0x80, 0x800, 0x10000};

std::size_t lengthFromLead(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC0 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  if (lead >= 0xF0 && lead < 0xF8) return 4;
  return 0;
}

std::optional<Decoded> decodeFirst(std::string_view utf8) {
  if (utf8.empty()) return std::nullopt;
  const auto lead = static_cast<unsigned char>(utf8[0]);
  const auto length = lengthFromLead(lead);
  if (length == 0 || length > utf8.size()) return std::nullopt;
  if (length == 1) return Decoded{lead, 1};

  char32_t scalar = lead & (0x7F >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    if ((byte & 0xC0) != 0x80) return std::nullopt;
    scalar = scalar << 6 | (byte & 0x3F);
  }
  const bool isSurrogate = scalar >= 0xD800 && scalar < 0xE000;
  if (scalar < smallestOfLength[length] || scalar > 0x10FFFF || isSurrogate) return std::nullopt;
  return Decoded{scalar, length};
}

char byte(char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); }

void append(std::string& utf8, char32_t scalar) {
  if (scalar < 0x80) {
    utf8 += byte(scalar);
  } else if (scalar < 0x800) {
    utf8 += {byte(0xC0 | scalar >> 6), byte(0x80 | (scalar & 0x3F))};
  } else if (scalar < 0x10000) {
    utf8 += {byte(0xE0 | scalar >> 12), byte(0x80 | (scalar >> 6 & 0x3F)),
             byte(0x80 | (scalar & 0x3F))};
  } else {
    utf8 += {byte(0xF0 | scalar >> 18), byte(0x80 | (scalar >> 12 & 0x3F)),
             byte(0x80 | (scalar >> 6 & 0x3F)), byte(0x80 | (scalar & 0x3F))};
  }
}

// Upper-case letters; every `step`th has its lower-case letter at the same distance.
struct Letters {
  char32_t first;
  char32_t last;
  char32_t step;
  int toLower;

  bool holdUpper(char32_t letter) const {
    return letter >= first && letter <= last && (letter - first) % step == 0;
  }
};

constexpr std::array letters{
    Letters{'A', 'Z', 1, 32},        // Latin
    Letters{0xC0, 0xD6, 1, 32},      // À to Ö
    Letters{0xD8, 0xDE, 1, 32},      // Ø to Þ
    Letters{0x100, 0x12E, 2, 1},     // Ā to Į
    Letters{0x132, 0x136, 2, 1},     // Ĳ to Ķ
    Letters{0x139, 0x147, 2, 1},     // Ĺ to Ň
    Letters{0x14A, 0x176, 2, 1},     // Ŋ to Ŷ
    Letters{0x178, 0x178, 1, -121},  // Ÿ
    Letters{0x179, 0x17D, 2, 1},     // Ź to Ž
    Letters{0x1A0, 0x1A0, 1, 1},     // Ơ
    Letters{0x1AF, 0x1AF, 1, 1},     // Ư
    Letters{0x218, 0x21E, 2, 1},     // Ș to Ȟ
    Letters{0x1E00, 0x1E94, 2, 1},   // Ḁ to Ẕ
    Letters{0x1EA0, 0x1EFE, 2, 1},   // Ạ to Ỿ
    Letters{0x386, 0x386, 1, 38},    // Greek: Ά
    Letters{0x388, 0x38A, 1, 37},    // Έ to Ί
    Letters{0x38C, 0x38C, 1, 64},    // Ό
    Letters{0x38E, 0x38F, 1, 63},    // Ύ, Ώ
    Letters{0x391, 0x3A1, 1, 32},    // Α to Ρ
    Letters{0x3A3, 0x3AB, 1, 32},    // Σ to Ϋ
    Letters{0x400, 0x40F, 1, 80},    // Cyrillic: Ѐ to Џ
    Letters{0x410, 0x42F, 1, 32},    // А to Я
    Letters{0x48A, 0x4BE, 2, 1},     // Ҋ to Ҿ
    Letters{0x4C1, 0x4CD, 2, 1},     // Ӂ to Ӎ
    Letters{0x4D0, 0x52E, 2, 1},     // Ӑ to Ԯ
    Letters{0x531, 0x556, 1, 48},    // Armenian
};

void appendUpper(std::string& utf8, char32_t scalar) {
  switch (scalar) {
    case 0xDF:
      utf8 += "SS";
      return;  // ß
    case 0x131:
      utf8 += 'I';
      return;  // ı
    case 0x3C2:
      return append(utf8, 0x3A3);  // ς
  }
  for (const auto& range : letters) {
    const auto upper = static_cast<char32_t>(static_cast<int>(scalar) - range.toLower);
    if (range.holdUpper(upper)) return append(utf8, upper);
  }
  append(utf8, scalar);
}

void appendLower(std::string& utf8, char32_t scalar) {
  if (scalar == 0x130) {  // İ keeps its dot as a mark of its own
    utf8 += 'i';
    return append(utf8, 0x307);
  }
  for (const auto& range : letters)
    if (range.holdUpper(scalar))
      return append(utf8, static_cast<char32_t>(static_cast<int>(scalar) + range.toLower));
  append(utf8, scalar);
}

std::string mapped(std::string_view utf8, void (*appendMapped)(std::string&, char32_t)) {
  std::string result;
  result.reserve(utf8.size());
  while (!utf8.empty()) {
    const auto first = decodeFirst(utf8);
    if (first)
      appendMapped(result, first->scalar);
    else
      result += utf8[0];
    utf8.remove_prefix(first ? first->length : 1);
  }
  return result;
}

bool isWhiteSpace(char32_t scalar) {
  constexpr std::u32string_view others = U" \u0085\u00a0\u1680\u2028\u2029\u202f\u205f\u3000";
  return (scalar >= '\t' && scalar <= '\r') || (scalar >= 0x2000 && scalar <= 0x200a) ||
         others.contains(scalar);
}

}  // namespace

std::optional<char32_t> firstScalar(std::string_view utf8) {
  const auto first = decodeFirst(utf8);
  return first ? std::optional(first->scalar) : std::nullopt;
}

std::string upperCased(std::string_view utf8) { return mapped(utf8, appendUpper); }
std::string lowerCased(std::string_view utf8) { return mapped(utf8, appendLower); }

std::string oneLine(std::string_view utf8) {
  constexpr unsigned char leadOfC1 = 0xC2;  // of U+0080 to U+00BF; the controls end at U+009F
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
  std::string line;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    if (at(i) == '\n') {
      line += "\\n";
    } else if (at(i) < 0x20 || at(i) == 0x7F) {
      line += fmt::format("\\x{:02X}", at(i));
    } else if (at(i) == leadOfC1 && i + 1 < utf8.size() && at(i + 1) < 0xA0) {
      line += fmt::format("\\x{:02X}", at(++i));
    } else {
      line += utf8[i];
    }
  }
  return line;
}

std::string_view trimmed(std::string_view utf8) {
  std::size_t first = utf8.size();
  std::size_t end = first;
  for (std::size_t at = 0; at < utf8.size();) {
    const auto next = decodeFirst(utf8.substr(at));
    const auto length = next ? next->length : 1;
    if (!next || !isWhiteSpace(next->scalar)) {
      first = std::min(first, at);
      end = at + length;
    }
    at += length;
  }
  return utf8.substr(first, end - first);
}

}  // namespace pellow
