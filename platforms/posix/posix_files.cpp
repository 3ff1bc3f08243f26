#include "platforms/posix/posix_files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platforms/posix/file_contents.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {
namespace {

std::unexpected<SystemError> failure(std::string_view path, const std::error_code& error) {
  return std::unexpected(SystemError{fmt::format("{}: {}.", path, error.message())});
}

FileStamp stampOf(const struct stat& state) {
#ifdef __APPLE__
  const auto& modified = state.st_mtimespec;
#else
  const auto& modified = state.st_mtim;
#endif
  return {.modified = std::int64_t{modified.tv_sec} * 1'000'000'000 + modified.tv_nsec,
          .identity = state.st_ino,
          .size = static_cast<std::uint64_t>(state.st_size)};
}

}  // namespace

bool PosixFiles::isFolder(const std::string& path) const {
  struct stat state{};
  return stat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode);
}

std::optional<FileStamp> PosixFiles::stamp(const std::string& path) const {
  struct stat state{};
  if (stat(path.c_str(), &state) != 0) return std::nullopt;
  return stampOf(state);
}

std::expected<std::string, SystemError> PosixFiles::read(const std::string& path,
                                                         std::size_t limit) const {
  // A pipe without a writer would make us wait.
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat state{};
  if (!file || fstat(file.number(), &state) != 0) return failure(path, lastError());
  if (!S_ISREG(state.st_mode)) return std::unexpected(SystemError{path + ": No ordinary file."});
  auto contents = readAll(file.number(), limit);
  if (!contents) return failure(path, contents.error());
  return std::move(*contents);
}

// Does not wait for the disk: what is lost with the power is written anew.
std::expected<FileStamp, SystemError> PosixFiles::write(const std::string& path,
                                                        std::string_view contents) {
  const std::filesystem::path target(path);
  std::error_code error;
  std::filesystem::create_directories(target.parent_path(), error);
  if (error) return failure(path, error);
  auto growing = target.parent_path() / fmt::format(".{}.XXXXXX", target.filename().native());
  auto name = growing.native();
  const FileDescriptor file(mkstemp(name.data()));
  if (!file) return failure(path, lastError());
  struct stat state{};
  error = writeAll(file.number(), contents);
  if (!error && fstat(file.number(), &state) != 0) error = lastError();
  if (!error && ::rename(name.c_str(), path.c_str()) != 0) error = lastError();
  if (!error) return stampOf(state);
  unlink(name.c_str());
  return failure(path, error);
}

std::expected<void, SystemError> PosixFiles::rename(const std::string& from,
                                                    const std::string& to) {
  if (::rename(from.c_str(), to.c_str()) == 0) return {};
  return failure(from, lastError());
}

}  // namespace pellow
