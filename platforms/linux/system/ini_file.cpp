#include "platforms/linux/system/ini_file.h"

#include <fstream>

#include "base/unicode.h"

namespace pellow {

IniGroup readIniGroup(const std::filesystem::path& file, std::string_view group, char separator) {
  std::ifstream lines(file);
  IniGroup keys;
  bool isInGroup = group.empty();
  for (std::string line; std::getline(lines, line);) {
    const auto text = trimmed(line);
    if (!group.empty() && text.starts_with('[')) {
      isInGroup = text.size() == group.size() + 2 && text.substr(1, group.size()) == group;
      continue;
    }
    const auto at = text.find(separator);
    if (!isInGroup || text.starts_with('#') || at == std::string_view::npos) continue;
    keys.emplace(trimmed(text.substr(0, at)), trimmed(text.substr(at + 1)));
  }
  return keys;
}

std::string value(const IniGroup& group, std::string_view key, std::string_view otherwise) {
  const auto found = group.find(key);
  return found == group.end() ? std::string(otherwise) : found->second;
}

}  // namespace pellow
