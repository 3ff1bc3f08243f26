#include "platforms/linux/updates/version_order.h"

#include <algorithm>

namespace pellow {

namespace {

bool isDigit(char character) { return character >= '0' && character <= '9'; }
bool isLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

std::string_view takeWhile(std::string_view& text, bool (*belongs)(char)) {
  const auto length =
      static_cast<std::size_t>(std::ranges::find_if_not(text, belongs) - text.begin());
  const auto taken = text.substr(0, length);
  text.remove_prefix(length);
  return taken;
}

// Numbers of any length.
std::strong_ordering compareNumbers(std::string_view a, std::string_view b) {
  const auto digits = [](std::string_view number) {
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
  };
  const auto left = digits(a);
  const auto right = digits(b);
  if (left.size() != right.size()) return left.size() <=> right.size();
  return left <=> right;
}

std::string_view withoutBuild(std::string_view version) {
  return version.substr(0, version.find('+'));
}

// "1.2" of "1.2-beta.3", which leaves "beta.3".
std::string_view takeRelease(std::string_view& version) {
  const auto end = std::min(
      std::ranges::find_if(version,
                           [](char character) { return character == '-' || isLetter(character); }) -
          version.begin(),
      std::ssize(version));
  const auto release = version.substr(0, static_cast<std::size_t>(end));
  version.remove_prefix(static_cast<std::size_t>(end));
  if (version.starts_with('-')) version.remove_prefix(1);
  return release;
}

std::strong_ordering compareReleases(std::string_view a, std::string_view b) {
  while (!a.empty() || !b.empty()) {
    const auto order = compareNumbers(takeWhile(a, isDigit), takeWhile(b, isDigit));
    if (order != 0) return order;
    takeWhile(a, [](char character) { return !isDigit(character); });
    takeWhile(b, [](char character) { return !isDigit(character); });
  }
  return std::strong_ordering::equal;
}

// Letters by their order, numbers after no number.
std::strong_ordering compareStages(std::string_view a, std::string_view b) {
  while (!a.empty() || !b.empty()) {
    const auto words = takeWhile(a, isLetter) <=> takeWhile(b, isLetter);
    if (words != 0) return words;
    const auto numbers = compareNumbers(takeWhile(a, isDigit), takeWhile(b, isDigit));
    if (numbers != 0) return numbers;
    const auto isBetween = [](char character) {
      return !isDigit(character) && !isLetter(character);
    };
    takeWhile(a, isBetween);
    takeWhile(b, isBetween);
  }
  return std::strong_ordering::equal;
}

}  // namespace

std::strong_ordering compareVersions(std::string_view a, std::string_view b) {
  auto stageOfA = withoutBuild(a);
  auto stageOfB = withoutBuild(b);
  const auto releaseOfA = takeRelease(stageOfA);
  const auto releaseOfB = takeRelease(stageOfB);
  const auto releases = compareReleases(releaseOfA, releaseOfB);
  if (releases != 0) return releases;
  if (stageOfA.empty() || stageOfB.empty()) return stageOfA.empty() <=> stageOfB.empty();
  return compareStages(stageOfA, stageOfB);
}

}  // namespace pellow
