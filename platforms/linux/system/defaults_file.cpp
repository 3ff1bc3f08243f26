#include "platforms/linux/system/defaults_file.h"

#include <system_error>
#include <utility>

#include "platforms/linux/system/files.h"

namespace pellow {
namespace {

using Values = DefaultsFile::Values;

std::string textOf(const Values& values) {
  return values.dump(2, ' ', false, Values::error_handler_t::replace) + '\n';
}

// A link stays a link: some people keep their settings elsewhere.
std::filesystem::path behindLinks(const std::filesystem::path& path) {
  std::error_code error;
  auto target = std::filesystem::weakly_canonical(path, error);
  return error ? path : target;
}

}  // namespace

DefaultsFile::DefaultsFile(const std::filesystem::path& path, const Log& log)
    : path_(behindLinks(path)), log_(log) {}

std::expected<std::optional<Values>, SystemError> DefaultsFile::read() const {
  const auto contents = readFile(path_);
  if (!contents) {
    if (contents.error() == std::errc::no_such_file_or_directory) return std::nullopt;
    return std::unexpected(SystemError{fmt::format("Could not read {}: {}; changes are not kept.",
                                                   path_.native(), contents.error().message())});
  }
  auto values = Values::parse(*contents, nullptr, false);
  if (values.is_object()) return values;
  if (const auto aside = setAside(); !aside) return std::unexpected(aside.error());
  return std::nullopt;
}

std::expected<void, SystemError> DefaultsFile::setAside() const {
  auto other = path_;
  other += ".bad";
  auto error = renameWithoutReplacing(path_, other);
  for (int number = 1; error == std::errc::file_exists; ++number) {
    other = path_;
    other += fmt::format(".bad.{}", number);
    error = renameWithoutReplacing(path_, other);
  }
  if (error)
    return std::unexpected(
        SystemError{fmt::format("{} is not a JSON object and could not be set aside: {}; "
                                "changes are not kept.",
                                path_.native(), error.message())});
  log_.warning("{} is not a JSON object; it is kept as {}, and a new file takes its place.",
               path_.native(), other.filename().native());
  return {};
}

std::expected<void, SystemError> DefaultsFile::publish(const Values& values) const {
  return publishFile(path_, textOf(values));
}

std::expected<void, SystemError> DefaultsFile::store(const Values& values,
                                                     const Keys& changed) const {
  return rewriteFileAtomically(path_, [&]() -> std::expected<std::string, SystemError> {
    auto contents = read();
    if (!contents) return std::unexpected(contents.error());
    auto merged = std::move(*contents).value_or(values);
    for (const auto& key : changed) {
      if (const auto value = values.find(key); value != values.end())
        merged[key] = *value;
      else
        merged.erase(key);
    }
    return textOf(merged);
  });
}

}  // namespace pellow
