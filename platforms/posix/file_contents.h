#pragma once

#include <cstddef>
#include <expected>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

namespace pellow {

// Why the latest call of the system failed on this thread.
std::error_code lastError();

// What is left to read of an open file: `file_too_large` if that is more than `limit` bytes. Any
// thread.
std::expected<std::string, std::error_code> readAll(
    int fileDescriptor, std::size_t limit = std::numeric_limits<std::size_t>::max());

// The error, or none. Any thread.
std::error_code writeAll(int fileDescriptor, std::string_view contents);

}  // namespace pellow
