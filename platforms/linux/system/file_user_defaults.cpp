#include "platforms/linux/system/file_user_defaults.h"

#include <cstdlib>
#include <system_error>
#include <utility>

#include "platforms/linux/system/defaults_encoding.h"
#include "platforms/linux/system/files.h"

namespace pellow {
namespace {

using Json = nlohmann::ordered_json;

constexpr Seconds writeDelay = 0.25;  // well within the second that eventual writes may take

}  // namespace

std::filesystem::path FileUserDefaults::standardFile() {
  const char* const configured = std::getenv("XDG_CONFIG_HOME");
  const char* const home = std::getenv("HOME");
  // A relative folder is to be ignored, as the base directory convention says.
  const auto folder = configured && configured[0] == '/'
                          ? std::filesystem::path(configured)
                          : std::filesystem::path(home ? home : "/") / ".config";
  return folder / "pellow" / "defaults.json";
}

FileUserDefaults::FileUserDefaults(const std::filesystem::path& file, MainQueue& queue,
                                   const Log& log)
    : file_(file), queue_(queue), log_(log) {
  // A file that is a link, as people who keep their settings elsewhere have it, stays one.
  std::error_code error;
  if (auto target = std::filesystem::weakly_canonical(file, error); !error)
    file_ = std::move(target);
  if (auto contents = read()) {
    stored_ = std::move(*contents).value_or(Json::object());
  } else {
    unusable_ = contents.error();
    log_.warning("{}", unusable_->sentence);
  }
}

FileUserDefaults::~FileUserDefaults() { flush(); }

std::optional<DefaultsValue> FileUserDefaults::value(std::string_view key) const {
  if (const auto found = stored_.find(key); found != stored_.end())
    if (auto value = decodeDefaultsValue(*found)) return value;
  const auto found = registered_.find(key);
  if (found == registered_.end()) return std::nullopt;
  return found->second;
}

std::expected<void, SystemError> FileUserDefaults::set(std::string_view key, DefaultsValue value,
                                                       Kept kept) {
  auto json = encodeDefaultsValue(value);
  const auto found = stored_.find(key);
  if (found == stored_.end() || *found != json) {
    stored_[std::string(key)] = std::move(json);
    changed_.emplace(key);
  }
  if (changed_.empty()) return {};
  if (kept == Kept::atOnce) return unusable_ ? std::unexpected(*unusable_) : write();
  if (!pendingWrite_) pendingWrite_ = queue_.after(writeDelay, [this] { flush(); });
  return {};
}

void FileUserDefaults::registerDefaults(std::map<std::string, DefaultsValue> values) {
  for (auto& [key, value] : values) registered_.insert_or_assign(key, std::move(value));
}

void FileUserDefaults::flush() {
  pendingWrite_.cancel();
  if (changed_.empty() || unusable_) return;
  const auto written = write();
  if (written) {
    reported_.reset();
  } else if (reported_ != written.error()) {
    reported_ = written.error();
    log_.warning("{}", reported_->sentence);
  }
}

std::expected<std::optional<Json>, SystemError> FileUserDefaults::read() const {
  const auto contents = readFile(file_);
  if (!contents) {
    if (contents.error() == std::errc::no_such_file_or_directory) return std::nullopt;
    return std::unexpected(SystemError{fmt::format("Could not read {}: {}; changes are not kept.",
                                                   file_.native(), contents.error().message())});
  }
  auto json = Json::parse(*contents, nullptr, false);
  if (json.is_object()) return json;
  if (const auto aside = setAside(); !aside) return std::unexpected(aside.error());
  return std::nullopt;
}

std::expected<void, SystemError> FileUserDefaults::setAside() const {
  auto other = file_;
  other += ".bad";
  auto error = renameWithoutReplacing(file_, other);
  for (int number = 1; error == std::errc::file_exists; ++number) {
    other = file_;
    other += fmt::format(".bad.{}", number);
    error = renameWithoutReplacing(file_, other);
  }
  if (error)
    return std::unexpected(
        SystemError{fmt::format("{} is not a JSON object and could not be set aside: {}; "
                                "changes are not kept.",
                                file_.native(), error.message())});
  log_.warning("{} is not a JSON object; it is kept as {}, and a new file takes its place.",
               file_.native(), other.filename().native());
  return {};
}

std::expected<void, SystemError> FileUserDefaults::write() {
  auto written = rewriteFileAtomically(file_, [this]() -> std::expected<std::string, SystemError> {
    auto contents = read();
    if (!contents) return std::unexpected(contents.error());
    auto json = std::move(*contents).value_or(stored_);
    for (const auto& key : changed_) json[key] = stored_[key];
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
  });
  if (!written) return written;
  changed_.clear();
  pendingWrite_.cancel();
  return {};
}

}  // namespace pellow
