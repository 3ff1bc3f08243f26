#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

// The user's folders as the environment names them. A variable that is not set, or names no
// absolute folder, stands for its usual folder.

namespace pellow {

std::filesystem::path homeFolder();

// Of TMPDIR, else /tmp.
std::filesystem::path temporaryFolder();

// Of XDG_CONFIG_HOME, else ~/.config.
std::filesystem::path configurationFolder();

// That one, then those of the whole machine: of XDG_CONFIG_DIRS, else /etc/xdg.
std::vector<std::filesystem::path> configurationFolders();

// Of XDG_DATA_HOME, else ~/.local/share, then of XDG_DATA_DIRS, else /usr/local/share and
// /usr/share.
std::vector<std::filesystem::path> dataFolders();

// For what need not outlive the session: of XDG_RUNTIME_DIR, which is in memory; if that cannot be
// written to, of XDG_STATE_HOME, else ~/.local/state.
std::filesystem::path sessionFolder();

// The absolute ones among the folders of a list, which colons separate.
std::vector<std::filesystem::path> foldersOfList(std::string_view list);

}  // namespace pellow
