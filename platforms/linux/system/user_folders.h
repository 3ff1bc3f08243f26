#pragma once

#include <filesystem>

// The user's folders as the environment names them. A variable that is not set, or names no
// absolute folder, stands for its usual folder.

namespace pellow {

std::filesystem::path homeFolder();

// Of XDG_CONFIG_HOME, else ~/.config.
std::filesystem::path configurationFolder();

// For what need not outlive the session: of XDG_RUNTIME_DIR, which is in memory; if that cannot be
// written to, of XDG_STATE_HOME, else ~/.local/state.
std::filesystem::path sessionFolder();

}  // namespace pellow
