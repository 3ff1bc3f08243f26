#include "platforms/linux/system/user_folders.h"

#include <unistd.h>

#include <ranges>
#include <string>
#include <utility>

#include "platforms/linux/system/environment.h"

namespace pellow {
namespace {

namespace fs = std::filesystem;

fs::path folder(const char* variable, const fs::path& otherwise) {
  fs::path value = environment(variable);
  return value.is_absolute() ? value : otherwise;
}

std::vector<fs::path> withShared(fs::path own, const char* variable, std::string_view otherwise) {
  std::vector<fs::path> folders{std::move(own)};
  const auto list = environment(variable);
  for (auto& each : foldersOfList(list.empty() ? otherwise : list))
    folders.push_back(std::move(each));
  return folders;
}

}  // namespace

fs::path homeFolder() { return folder("HOME", "/"); }

fs::path temporaryFolder() { return folder("TMPDIR", "/tmp"); }

fs::path configurationFolder() { return folder("XDG_CONFIG_HOME", homeFolder() / ".config"); }

std::vector<fs::path> configurationFolders() {
  return withShared(configurationFolder(), "XDG_CONFIG_DIRS", "/etc/xdg");
}

std::vector<fs::path> dataFolders() {
  return withShared(folder("XDG_DATA_HOME", homeFolder() / ".local" / "share"), "XDG_DATA_DIRS",
                    "/usr/local/share:/usr/share");
}

fs::path sessionFolder() {
  auto runtime = folder("XDG_RUNTIME_DIR", {});
  if (!runtime.empty() && access(runtime.c_str(), W_OK | X_OK) == 0) return runtime;
  return folder("XDG_STATE_HOME", homeFolder() / ".local" / "state");
}

std::vector<fs::path> foldersOfList(std::string_view list) {
  std::vector<fs::path> folders;
  for (const auto part : std::views::split(list, ':'))
    if (fs::path folder = std::string_view(part); folder.is_absolute())
      folders.push_back(std::move(folder));
  return folders;
}

}  // namespace pellow
