#pragma once

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/system_error.h"

namespace pellow {

// Replaces the contents of a file, which only its owner may read, as a whole and on disk: whoever
// opens it, even after a loss of power, finds the old contents or the new ones. Makes the folder
// when it is missing. Several processes may do it at once.
std::expected<void, SystemError> writeFileAtomically(const std::filesystem::path& file,
                                                     std::string_view contents);

std::expected<std::string, std::error_code> readFile(const std::filesystem::path& file);

// `file_exists` when there is a file of the new name; it is never replaced.
std::error_code renameWithoutReplacing(const std::filesystem::path& from,
                                       const std::filesystem::path& to);

}  // namespace pellow
