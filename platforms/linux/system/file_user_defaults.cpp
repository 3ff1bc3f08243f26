#include "platforms/linux/system/file_user_defaults.h"

#include <fmt/format.h>

#include <utility>

#include "platforms/linux/system/defaults_encoding.h"
#include "platforms/linux/system/user_folders.h"

namespace pellow {
namespace {

// A file name of its own for every name: characters special to the file system are written like
// %2F.
std::string safeFileName(std::string_view text) {
  std::string safe;
  for (const char c : text) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool isDigit = c >= '0' && c <= '9';
    if (isLetter || isDigit || std::string_view(".:-_").contains(c))
      safe += c;
    else
      safe += fmt::format("%{:02X}", static_cast<unsigned char>(c));
  }
  return safe;
}

}  // namespace

FileUserDefaults::Files FileUserDefaults::standardFiles(const std::string& display) {
  return {.settings = configurationFolder() / "pellow" / "defaults.json",
          .session = sessionFolder() / "pellow" / ("parked-" + safeFileName(display) + ".json")};
}

FileUserDefaults::FileUserDefaults(const Files& files, const Log& log)
    : settings_(files.settings, log), session_(files.session, log) {}

// Earlier versions kept everything among the settings; what they left there is read until it is
// replaced.
std::optional<DefaultsValue> FileUserDefaults::value(std::string_view key) const {
  for (const auto& stored : {session_.value(key), settings_.value(key)})
    if (stored)
      if (auto value = decodeDefaultsValue(*stored)) return value;
  const auto found = registered_.find(key);
  if (found == registered_.end()) return std::nullopt;
  return found->second;
}

std::expected<void, SystemError> FileUserDefaults::set(std::string_view key, DefaultsValue value,
                                                       Kept kept) {
  auto json = encodeDefaultsValue(value);
  if (kept == Kept::eventually) {
    settings_.set(key, std::move(json));
    return {};
  }
  auto published = session_.set(key, std::move(json));
  if (published) settings_.remove(key);
  return published;
}

void FileUserDefaults::registerDefaults(std::map<std::string, DefaultsValue> values) {
  for (auto& [key, value] : values) registered_.insert_or_assign(key, std::move(value));
}

}  // namespace pellow
