#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "platform/system_error.h"

namespace pellow {

// A version of the program in a feed.
struct AppcastItem {
  std::string version;         // to compare
  std::string displayVersion;  // for people
  std::string notes;           // what is new, most often as HTML; may be empty
  std::string page;            // where people get it; empty when nobody says, or of another kind

  bool operator==(const AppcastItem&) const = default;
};

// The kinds of address that people are led to.
enum class AppcastLinks { https, httpAndHttps };

// The newest version in an appcast: an RSS feed with elements of Sparkle's. Versions for other
// systems, for a channel of their own (such as "beta") and without a number do not count. Nothing
// when no version does. The error is a sentence.
std::expected<std::optional<AppcastItem>, SystemError> newestInAppcast(
    std::string_view xml, AppcastLinks links = AppcastLinks::https);

}  // namespace pellow
