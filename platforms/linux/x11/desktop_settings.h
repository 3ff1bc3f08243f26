#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// Settings of the desktop and of window managers, in the places where they keep them. Nothing where
// there is no such setting, or no answer in time.

// A line "key<separator>value" of a text file, under "[group]" unless the group is empty. White
// space around both does not count.
std::optional<std::string> fileSetting(const std::filesystem::path& file, std::string_view group,
                                       std::string_view key, char separator);

// A text among the settings of GNOME, MATE and their like, as the `gsettings` program tells it.
std::optional<std::string> gsettingsText(const std::string& schema, const std::string& key,
                                         Deadline deadline);

// A text that the running settings daemon announces to toolkits, for example
// "Gtk/DecorationLayout".
std::optional<std::string> announcedText(X11Server& server, std::string_view name,
                                         Deadline deadline);

}  // namespace pellow
