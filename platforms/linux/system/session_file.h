#pragma once

#include <expected>
#include <optional>
#include <string_view>

#include "platforms/linux/system/defaults_file.h"

namespace pellow {

// What the next process must know of this session on its desktop, in a file that only one program
// writes. Main thread.
class SessionFile {
 public:
  // Reads the file. One that cannot be read is left alone and logged.
  SessionFile(const std::filesystem::path& path, const Log& log);

  std::optional<DefaultsFile::Values> value(std::string_view key) const;

  // The next process can read the value before this returns. The error says why not; the value then
  // stays in memory, and the next call writes it too.
  std::expected<void, SystemError> set(std::string_view key, DefaultsFile::Values value);

 private:
  DefaultsFile file_;
  DefaultsFile::Values values_ = DefaultsFile::Values::object();
  std::optional<SystemError> unusable_;  // the file cannot be read and must not be replaced
  bool isPublished_ = true;
};

}  // namespace pellow
