#include "platforms/linux/system/desktop_file.h"

#include <fstream>

namespace pellow {

namespace {

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

}  // namespace

DesktopFileKeys readDesktopFile(const std::filesystem::path& file) {
  std::ifstream stream(file);
  DesktopFileKeys keys;
  bool isInGroup = false;
  for (std::string line; std::getline(stream, line);) {
    const std::string_view text = trimmed(line);
    if (text.starts_with('[')) {
      if (isInGroup) break;
      isInGroup = text == "[Desktop Entry]";
      continue;
    }
    const auto equals = text.find('=');
    if (!isInGroup || text.starts_with('#') || equals == std::string_view::npos) continue;
    keys.emplace(trimmed(text.substr(0, equals)), trimmed(text.substr(equals + 1)));
  }
  return keys;
}

std::string value(const DesktopFileKeys& keys, std::string_view key) {
  const auto found = keys.find(key);
  return found == keys.end() ? std::string() : found->second;
}

// Inside the quotes a backslash escapes a character, and "%" is doubled; and as everywhere in a
// desktop file, each backslash is written as two.
std::string execValue(const std::filesystem::path& program) {
  std::string quoted = "\"";
  for (const char character : program.native()) {
    if (character == '\\') {
      quoted += R"(\\\\)";
    } else if (character == '"' || character == '`' || character == '$') {
      quoted += R"(\\)";
      quoted += character;
    } else if (character == '%') {
      quoted += "%%";
    } else if (character == '\n') {
      quoted += R"(\n)";
    } else {
      quoted += character;
    }
  }
  return quoted + '"';
}

}  // namespace pellow
