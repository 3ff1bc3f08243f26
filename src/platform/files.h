#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "platform/system_error.h"

namespace pellow {

// What tells one state of a file from the next without reading it.
struct FileStamp {
  std::int64_t modified = 0;   // nanoseconds since 1970, by the clock of whoever wrote it
  std::uint64_t identity = 0;  // of the file that has the name now
  std::uint64_t size = 0;      // bytes

  bool operator==(const FileStamp&) const = default;
};

// The user's files, by absolute paths. Each call is short, unless somebody serves the folder over a
// network and does not answer. Errors are sentences for the log. Main thread.
class Files {
 public:
  virtual ~Files() = default;

  virtual std::string homeFolder() const = 0;
  virtual std::string temporaryFolder() const = 0;

  virtual bool isFolder(const std::string& path) const = 0;

  // Nothing when there is no such file. Does not open it.
  virtual std::optional<FileStamp> stamp(const std::string& path) const = 0;

  // The contents of an ordinary file of at most `limit` bytes; everything else is an error, also
  // what would make the reader wait.
  virtual std::expected<std::string, SystemError> read(const std::string& path,
                                                       std::size_t limit) const = 0;

  // Replaces the file as a whole, so that nobody ever reads half of it, and answers the stamp of
  // what was written. Makes missing folders. After an error the file is as it was.
  virtual std::expected<FileStamp, SystemError> write(const std::string& path,
                                                      std::string_view contents) = 0;

  // Gives whatever has this name another one, in the place of what had that.
  virtual std::expected<void, SystemError> rename(const std::string& from,
                                                  const std::string& to) = 0;
};

}  // namespace pellow
