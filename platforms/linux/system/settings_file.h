#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <thread>

#include "platforms/linux/system/defaults_file.h"

namespace pellow {

// The settings in their file. They are read once, when this is made; what another program sets
// later is not seen. Changes are gathered and written on a thread of their own, since the disk may
// be slow. A file that cannot be read is left alone, and the settings stay in memory; that and
// every other failure is logged. Main thread.
class SettingsFile {
 public:
  SettingsFile(const std::filesystem::path& path, const Log& log);
  // Like `finish`; a write that the disk has not taken by then goes on.
  ~SettingsFile();
  SettingsFile(const SettingsFile&) = delete;
  SettingsFile& operator=(const SettingsFile&) = delete;

  std::optional<DefaultsFile::Values> value(std::string_view key) const;

  // On disk within a second, unless the disk is busy.
  void set(std::string_view key, DefaultsFile::Values value);
  void remove(std::string_view key);

  // Waits until the disk has everything, for a few seconds at most; failing that, logs it.
  void finish();

 private:
  struct State;

  void requestWrite();  // with the lock

  std::shared_ptr<State> state_;  // the thread's as well, which may outlive this
  std::thread thread_;            // from the first change
};

}  // namespace pellow
