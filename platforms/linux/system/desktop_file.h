#pragma once

#include <filesystem>
#include <string>

#include "platforms/linux/system/ini_file.h"

namespace pellow {

// What a desktop file says about its program.
inline IniGroup readDesktopFile(const std::filesystem::path& file) {
  return readIniGroup(file, "Desktop Entry");
}

// The value of an "Exec" key that starts this program without arguments, whatever characters are in
// its path.
std::string execValue(const std::filesystem::path& program);

// The value of a "TryExec" key for it: a desktop leaves the entry out while there is no such
// program.
std::string tryExecValue(const std::filesystem::path& program);

}  // namespace pellow
