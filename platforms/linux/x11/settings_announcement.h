#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pellow {

// A text among the settings that a daemon announces to toolkits, from the bytes of its property
// "_XSETTINGS_SETTINGS". Nothing where there is none of this name. Any thread.
std::optional<std::string> announcedText(std::string_view announcement, std::string_view name);

}  // namespace pellow
