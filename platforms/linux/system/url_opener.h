#pragma once

#include <string_view>

namespace pellow {

// Opens a web page or a file ("http:", "https:", "file:") with the program of the user's choice,
// and the deep links to macOS's privacy settings, which ask for no permission here, with the
// settings of the desktop. Waits for no program that it starts. False for any other URL and when
// nothing is installed that opens it.
bool openURL(std::string_view url);

}  // namespace pellow
