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

// The same with contents that are asked for while no other process replaces the file, so that they
// can be made of what it holds. An error of theirs is handed on, and the file stays as it is.
std::expected<void, SystemError> rewriteFileAtomically(
    const std::filesystem::path& file,
    const std::function<std::expected<std::string, SystemError>()>& makeContents);

// The same without waiting for the disk: only a loss of power may leave something else. Those who
// clean up folders of sessions are asked to leave the file alone.
std::expected<void, SystemError> publishFile(const std::filesystem::path& file,
                                             std::string_view contents);

std::expected<std::string, std::error_code> readFile(const std::filesystem::path& file);

// `file_exists` when there is a file of the new name; it is never replaced.
std::error_code renameWithoutReplacing(const std::filesystem::path& from,
                                       const std::filesystem::path& to);

}  // namespace pellow
