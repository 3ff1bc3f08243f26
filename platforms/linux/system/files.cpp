#include "platforms/linux/system/files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platforms/posix/file_contents.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {
namespace {

std::unexpected<SystemError> failure(const std::filesystem::path& file, std::error_code error) {
  return std::unexpected(
      SystemError{fmt::format("Could not write {}: {}.", file.native(), error.message())});
}

std::error_code makeFolder(const std::filesystem::path& folder) {
  if (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) return {};
  if (errno != ENOENT || !folder.has_relative_path()) return lastError();
  if (const auto error = makeFolder(folder.parent_path())) return error;
  return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST ? std::error_code() : lastError();
}

bool isStillNamed(int number, const char* path) {
  struct stat open{};
  struct stat named{};
  return fstat(number, &open) == 0 && stat(path, &named) == 0 && open.st_dev == named.st_dev &&
         open.st_ino == named.st_ino;
}

// The new contents are written under one fixed name, so that a killed process leaves at most one
// file, which the next write takes over. The lock keeps two processes apart; whoever waited for it
// may find that the other has renamed the file, and begins again.
FileDescriptor openExclusively(const char* path) {
  for (;;) {
    FileDescriptor file(open(path, O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) return file;
    while (flock(file.number(), LOCK_EX) != 0) {
      if (errno != EINTR) return FileDescriptor();
    }
    if (isStillNamed(file.number(), path)) return file;
  }
}

bool syncFolder(const std::filesystem::path& folder) {
  const FileDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return descriptor && fsync(descriptor.number()) == 0;
}

enum class Wait { forDisk, forNothing };

std::expected<void, SystemError> replaceFile(
    const std::filesystem::path& file, Wait wait,
    const std::function<std::expected<std::string, SystemError>()>& makeContents) {
  const auto folder = file.parent_path();
  if (const auto error = makeFolder(folder)) return failure(file, error);

  auto growing = file;
  growing += ".new";
  const auto descriptor = openExclusively(growing.c_str());
  if (!descriptor) return failure(file, lastError());
  const auto contents = makeContents();
  if (!contents) {
    unlink(growing.c_str());
    return std::unexpected(contents.error());
  }
  const int number = descriptor.number();
  const bool waits = wait == Wait::forDisk;
  // The sticky bit is the sign to leave it alone.
  if (ftruncate(number, 0) != 0 || writeAll(number, *contents) ||
      (waits ? fsync(number) : fchmod(number, S_ISVTX | 0600)) != 0 ||
      rename(growing.c_str(), file.c_str()) != 0) {
    const auto reason = lastError();
    unlink(growing.c_str());
    return failure(file, reason);
  }
  if (waits && !syncFolder(folder)) return failure(file, lastError());
  return {};
}

}  // namespace

std::expected<void, SystemError> writeFileAtomically(const std::filesystem::path& file,
                                                     std::string_view contents) {
  return rewriteFileAtomically(file, [contents] { return std::string(contents); });
}

std::expected<void, SystemError> rewriteFileAtomically(
    const std::filesystem::path& file,
    const std::function<std::expected<std::string, SystemError>()>& makeContents) {
  return replaceFile(file, Wait::forDisk, makeContents);
}

std::expected<void, SystemError> publishFile(const std::filesystem::path& file,
                                             std::string_view contents) {
  return replaceFile(file, Wait::forNothing, [contents] { return std::string(contents); });
}

std::expected<std::string, std::error_code> readFile(const std::filesystem::path& file) {
  const FileDescriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (!descriptor) return std::unexpected(lastError());
  return readAll(descriptor.number());
}

std::error_code renameWithoutReplacing(const std::filesystem::path& from,
                                       const std::filesystem::path& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return {};
  return lastError();
}

}  // namespace pellow
