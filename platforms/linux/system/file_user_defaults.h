#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "base/log.h"
#include "platform/user_defaults.h"
#include "platforms/linux/system/session_file.h"
#include "platforms/linux/system/settings_file.h"

namespace pellow {

// User defaults in two files: the user's settings, and, for each display, what must be kept at
// once. The latter needs no disk, so that nothing done to windows waits for one.
class FileUserDefaults final : public UserDefaults {
 public:
  struct Files {
    std::filesystem::path settings;
    std::filesystem::path session;
  };

  // $XDG_CONFIG_HOME/pellow/defaults.json and $XDG_RUNTIME_DIR/pellow/parked-DISPLAY.json, or what
  // stands for these folders. `display` is its canonical name, for example ":0".
  static Files standardFiles(const std::string& display);

  // Reads the files.
  FileUserDefaults(const Files& files, const Log& log);

  std::optional<DefaultsValue> value(std::string_view key) const override;
  std::expected<void, SystemError> set(std::string_view key, DefaultsValue value,
                                       Kept kept) override;
  void registerDefaults(std::map<std::string, DefaultsValue> values) override;

  // Waits a few seconds for what is not on disk yet, when the process ends without destructors.
  void finish() { settings_.finish(); }

 private:
  SettingsFile settings_;
  SessionFile session_;
  std::map<std::string, DefaultsValue, std::less<>> registered_;
};

}  // namespace pellow
