#include "platforms/posix/file_contents.h"

#include <unistd.h>

#include <array>
#include <cerrno>

namespace pellow {

std::error_code lastError() { return {errno, std::generic_category()}; }

std::expected<std::string, std::error_code> readAll(int fileDescriptor, std::size_t limit) {
  std::string contents;
  std::array<char, 1 << 14> buffer;
  while (contents.size() <= limit) {
    const auto count = read(fileDescriptor, buffer.data(), buffer.size());
    if (count == 0) return contents;
    if (count < 0 && errno != EINTR) return std::unexpected(lastError());
    if (count > 0) contents.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return std::unexpected(std::make_error_code(std::errc::file_too_large));
}

std::error_code writeAll(int fileDescriptor, std::string_view contents) {
  while (!contents.empty()) {
    const auto written = write(fileDescriptor, contents.data(), contents.size());
    if (written < 0 && errno != EINTR) return lastError();
    if (written > 0) contents.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

}  // namespace pellow
