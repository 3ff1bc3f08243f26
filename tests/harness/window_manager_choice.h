#pragma once

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace pellow::desktop {

using Command = std::vector<std::string>;

struct Manager {
  Command command;
  // The option to take over from another one; empty if there is none that works.
  std::string replace = "--replace";
  // A program of its own paints the screen.
  Command compositor = {};
  // It paints the screen itself, or its compositor does.
  bool composites = false;
  // No window leaves the screen, and what Pellow would move is minimized.
  bool keepsWindowsOnDisplays = false;
};

// Private: without a session manager or the user's settings.
inline Manager managerNamed(const std::string& name) {
  const Command openbox{"openbox", "--sm-disable"};
  const auto withBus = [](Command command) {
    command.insert(command.begin(), {"dbus-run-session", "--"});
    return command;
  };
  const auto withoutSettings = [](Command command) {
    command.insert(command.begin(), {"env", "GSETTINGS_BACKEND=memory"});
    return command;
  };
  const std::map<std::string, Manager> managers{
      {"openbox", {openbox}},
      {"openbox-picom",
       {.command = openbox, .compositor = {"picom", "--config", "/dev/null"}, .composites = true}},
      {"xfwm4", {withBus({"xfwm4", "--compositor=off"})}},
      {"xfwm4-compositor", {.command = withBus({"xfwm4", "--compositor=on"}), .composites = true}},
      {"metacity", {withoutSettings({"metacity", "--sm-disable", "--no-composite"})}},
      {"metacity-compositor",
       {.command = withoutSettings({"metacity", "--sm-disable", "--composite"}),
        .composites = true,
        .keepsWindowsOnDisplays = true}},
      {"marco", {withoutSettings({"marco", "--sm-disable", "--no-composite"})}},
      {"marco-compositor",
       {.command = withoutSettings({"marco", "--sm-disable", "--composite"}),
        .composites = true,
        .keepsWindowsOnDisplays = true}},
      {"icewm", {{"icewm"}}},
      {"fluxbox", {{"fluxbox"}, ""}},
      {"kwin_x11", {{"env", "KWIN_COMPOSE=N", "kwin_x11", "--no-kactivities"}}},
      {"kwin_x11-compositor",
       {.command = {"env", "KWIN_COMPOSE=O2", "LIBGL_ALWAYS_SOFTWARE=1", "kwin_x11",
                    "--no-kactivities"},
        .composites = true}},
      {"mutter",
       {.command = withBus(withoutSettings({"mutter", "--x11"})),
        .replace = "",
        .composites = true,
        .keepsWindowsOnDisplays = true}},
      {"i3-floating",
       {{"sh", "-c",
         R"(printf '# i3 config file (v4)\nfor_window [class=".*"] floating enable\n' >"$HOME/i3" &&)"
         R"( exec i3 -c "$HOME/i3")"}}},
  };
  const auto found = managers.find(name);
  if (found == managers.end()) throw std::runtime_error("unknown window manager " + name);
  return found->second;
}

// Its user's settings, in a file below the home folder, which is only created with the desktop;
// none if that has no name.
inline Command withSettings(const Command& command, const std::string& file,
                            const std::string& contents) {
  Command result{"env", "GSETTINGS_BACKEND=keyfile"};
  if (!file.empty())
    result.insert(result.end(), {"sh", "-c",
                                 R"(cd "$HOME" && mkdir -p "${0%/*}" && echo "$1" >"$0" &&)"
                                 R"( shift && exec "$@")",
                                 file, contents});
  for (const auto& word : command)
    if (word != "GSETTINGS_BACKEND=memory") result.push_back(word);
  return result;
}

// The one that PELLOW_WINDOW_MANAGER names, openbox by default.
inline std::string chosenManagerName() {
  const auto* name = std::getenv("PELLOW_WINDOW_MANAGER");
  return name ? name : "openbox";
}
inline Manager chosenManager() { return managerNamed(chosenManagerName()); }

}  // namespace pellow::desktop
