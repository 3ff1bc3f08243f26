#include "platforms/linux/system/autostart_entry.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "platforms/linux/system/desktop_file.h"
#include "platforms/linux/system/files.h"
#include "platforms/linux/system/programs.h"
#include "platforms/linux/system/user_folders.h"

namespace pellow {

namespace fs = std::filesystem;

namespace {

bool startsProgram(const IniGroup& keys) {
  return !value(keys, "Exec").empty() && value(keys, "Hidden") != "true" &&
         value(keys, "X-GNOME-Autostart-enabled") != "false" &&
         value(keys, "X-MATE-Autostart-enabled") != "false";
}

std::string entryFor(const fs::path& program) {
  return fmt::format(
      "[Desktop Entry]\n"
      "Type=Application\n"
      "Name=Pellow\n"
      "Comment=Puts windows away and shows a tab for each\n"
      "Exec={}\n"
      "TryExec={}\n"
      "Icon=pellow\n"
      "Terminal=false\n"
      "X-GNOME-Autostart-enabled=true\n",
      execValue(program), tryExecValue(program));
}

constexpr std::string_view overrulingEntry =
    "[Desktop Entry]\n"
    "Type=Application\n"
    "Name=Pellow\n"
    "Hidden=true\n";

}  // namespace

AutostartEntry::AutostartEntry(std::vector<fs::path> configFolders, fs::path program)
    : program_(std::move(program)) {
  for (const auto& folder : configFolders)
    files_.push_back(folder / "autostart" / "pellow.desktop");
}

AutostartEntry AutostartEntry::ofEnvironment() { return {configurationFolders(), ownExecutable()}; }

bool AutostartEntry::isEnabled() const {
  const auto inForce = std::ranges::find_if(files_, [](const fs::path& file) {
    std::error_code error;
    return fs::exists(file, error);
  });
  return inForce != files_.end() && startsProgram(readDesktopFile(*inForce));
}

std::expected<void, SystemError> AutostartEntry::setEnabled(bool enabled) {
  if (enabled) return writeFileAtomically(files_.front(), entryFor(program_));
  if (auto removed = remove(); !removed) return removed;
  if (!isEnabled()) return {};
  return writeFileAtomically(files_.front(), overrulingEntry);
}

std::expected<void, SystemError> AutostartEntry::remove() {
  std::error_code error;
  fs::remove(files_.front(), error);
  if (!error) return {};
  return std::unexpected(SystemError{
      fmt::format("Could not remove {}: {}.", files_.front().native(), error.message())});
}

}  // namespace pellow
