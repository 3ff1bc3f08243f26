#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>

#include "base/log.h"
#include "platform/system_error.h"

namespace pellow {

// A file with values by key: one JSON object, always replaced as a whole, so that nobody ever reads
// half of it. Members that the program does not know stay as they are. Any thread.
class DefaultsFile {
 public:
  using Values = nlohmann::ordered_json;
  using Keys = std::set<std::string, std::less<>>;

  DefaultsFile(const std::filesystem::path& path, const Log& log);

  const std::filesystem::path& path() const { return path_; }

  // Nothing when there is no file, or no JSON object in it: then it has been set aside under
  // another name, and the log told.
  std::expected<std::optional<Values>, SystemError> read() const;

  // For the next process: does not wait for the disk, so a loss of power may take the file.
  std::expected<void, SystemError> publish(const Values& values) const;

  // Waits until the disk has it. Two programs of one user, on two displays, may share one file, so
  // only the values of `changed`, or their absence, go into what it holds by then; the later write
  // of a key stands.
  std::expected<void, SystemError> store(const Values& values, const Keys& changed) const;

 private:
  std::expected<void, SystemError> setAside() const;

  std::filesystem::path path_;
  Log log_;
};

}  // namespace pellow
