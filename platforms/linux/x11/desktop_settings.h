#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// Settings of the desktop and of window managers that somebody must be asked for. Nothing where
// there is no such setting, or no answer in time.

// A text among the settings of GNOME, MATE and their like, as the `gsettings` program tells it.
std::optional<std::string> gsettingsText(const std::string& schema, const std::string& key,
                                         Deadline deadline);

// A text that the running settings daemon announces to toolkits, for example
// "Gtk/DecorationLayout".
std::optional<std::string> announcedText(X11Server& server, std::string_view name,
                                         Deadline deadline);

}  // namespace pellow
