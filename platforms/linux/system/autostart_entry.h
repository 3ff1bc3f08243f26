#pragma once

#include <filesystem>
#include <vector>

#include "platform/login_item.h"

namespace pellow {

// The login item as a file in the user's autostart folder, which every desktop reads. Desktops
// switch such an entry off by a key in it or by removing it; both count. An entry of the whole
// machine holds unless the user has one of the same name.
class AutostartEntry final : public LoginItem {
 public:
  // The folders hold "autostart"; the user's own comes first and is the one that is written to.
  AutostartEntry(std::vector<std::filesystem::path> configFolders, std::filesystem::path program);

  // For this program, with the folders of the environment.
  static AutostartEntry ofEnvironment();

  bool isEnabled() const override;
  std::expected<void, SystemError> setEnabled(bool enabled) override;

 private:
  std::expected<void, SystemError> remove();

  std::vector<std::filesystem::path> files_;  // the user's own first
  std::filesystem::path program_;
};

}  // namespace pellow
