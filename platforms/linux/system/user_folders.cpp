#include "platforms/linux/system/user_folders.h"

#include <unistd.h>

#include <cstdlib>

namespace pellow {
namespace {

namespace fs = std::filesystem;

fs::path folder(const char* variable, const fs::path& otherwise) {
  const char* const value = std::getenv(variable);
  return value && value[0] == '/' ? fs::path(value) : otherwise;
}

}  // namespace

fs::path homeFolder() { return folder("HOME", "/"); }

fs::path configurationFolder() { return folder("XDG_CONFIG_HOME", homeFolder() / ".config"); }

fs::path sessionFolder() {
  auto runtime = folder("XDG_RUNTIME_DIR", {});
  if (!runtime.empty() && access(runtime.c_str(), W_OK | X_OK) == 0) return runtime;
  return folder("XDG_STATE_HOME", homeFolder() / ".local" / "state");
}

}  // namespace pellow
