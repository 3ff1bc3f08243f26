#include "platforms/linux/system/session_file.h"

#include <string>
#include <utility>

namespace pellow {

SessionFile::SessionFile(const std::filesystem::path& path, const Log& log) : file_(path, log) {
  if (auto contents = file_.read()) {
    values_ = std::move(*contents).value_or(DefaultsFile::Values::object());
  } else {
    unusable_ = contents.error();
    log.warning("{}", unusable_->sentence);
  }
}

std::optional<DefaultsFile::Values> SessionFile::value(std::string_view key) const {
  const auto found = values_.find(key);
  return found == values_.end() ? std::nullopt : std::optional(*found);
}

std::expected<void, SystemError> SessionFile::set(std::string_view key,
                                                  DefaultsFile::Values value) {
  if (const auto found = values_.find(key); found == values_.end() || *found != value) {
    values_[std::string(key)] = std::move(value);
    isPublished_ = false;
  }
  if (isPublished_) return {};
  if (unusable_) return std::unexpected(*unusable_);
  auto published = file_.publish(values_);
  isPublished_ = published.has_value();
  return published;
}

}  // namespace pellow
