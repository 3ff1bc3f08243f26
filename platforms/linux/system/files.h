#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/system_error.h"

namespace pellow {

// Replaces the contents of a file, which only its owner may read, as a whole: whoever opens it,
// even after a loss of power, finds the old contents or the new ones. Waits until they are on disk.
// Makes the folder, for its owner only, when it is missing. Several processes may do it at once.
std::expected<void, SystemError> writeFileAtomically(const std::filesystem::path& file,
                                                     std::string_view contents);

// The same, but asks for the contents while no other process can replace the file, so that they can
// build on what it holds. Their error is passed on, and the file stays as it is.
std::expected<void, SystemError> rewriteFileAtomically(
    const std::filesystem::path& file,
    const std::function<std::expected<std::string, SystemError>()>& makeContents);

// The same without waiting for the disk: only a loss of power may leave something else. Marks the
// file so that whoever cleans up session folders leaves it alone.
std::expected<void, SystemError> publishFile(const std::filesystem::path& file,
                                             std::string_view contents);

std::expected<std::string, std::error_code> readFile(const std::filesystem::path& file);

// `file_exists` when there is a file of the new name; it is never replaced.
std::error_code renameWithoutReplacing(const std::filesystem::path& from,
                                       const std::filesystem::path& to);

}  // namespace pellow
