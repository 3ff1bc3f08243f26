#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace pellow {

// The keys of the group "Desktop Entry" of a desktop file and their values as they are written.
using DesktopFileKeys = std::map<std::string, std::string, std::less<>>;

// Empty when there is no such file.
DesktopFileKeys readDesktopFile(const std::filesystem::path& file);

// Empty when the key is not there.
std::string value(const DesktopFileKeys& keys, std::string_view key);

// The value of an "Exec" key that starts this program without arguments, whatever characters are in
// its path.
std::string execValue(const std::filesystem::path& program);

}  // namespace pellow
