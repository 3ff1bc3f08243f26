#include "base/number.h"

#include <locale>
#include <sstream>
#include <string>

namespace pellow {
namespace {

// The length of the decimal number the text begins with. Streams disagree on where a number ends
// when text follows it, so they get the number alone.
std::size_t lengthOfNumber(std::string_view text) {
  std::size_t at = 0;
  const auto skipOne = [&](std::string_view characters) {
    const bool isThere = at < text.size() && characters.contains(text[at]);
    if (isThere) ++at;
    return isThere;
  };
  const auto skipDigits = [&] {
    const auto start = at;
    while (skipOne("0123456789")) continue;
    return at > start;
  };
  skipOne("+-");
  const bool hasWhole = skipDigits();
  const bool hasFraction = skipOne(".") && skipDigits();
  if (!hasWhole && !hasFraction) return 0;
  const auto end = at;
  if (!skipOne("eE")) return end;
  skipOne("+-");
  return skipDigits() ? at : end;
}

}  // namespace

std::optional<double> leadingNumber(std::string_view text) {
  std::istringstream stream(std::string(text.substr(0, lengthOfNumber(text))));
  stream.imbue(std::locale::classic());
  double number = 0;
  if (!(stream >> number)) return std::nullopt;
  return number;
}

}  // namespace pellow
