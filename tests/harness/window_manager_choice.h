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
  // The option to take over from another one; empty if there is none.
  std::string replace = "--replace";
};

// Private: without a session manager, a compositor or the user's settings.
inline Manager managerNamed(const std::string& name) {
  static const std::map<std::string, Manager> managers{
      {"openbox", {{"openbox", "--sm-disable"}}},
      {"xfwm4", {{"dbus-run-session", "--", "xfwm4", "--compositor=off"}}},
      {"metacity",
       {{"env", "GSETTINGS_BACKEND=memory", "metacity", "--sm-disable", "--no-composite"}}},
      {"marco", {{"env", "GSETTINGS_BACKEND=memory", "marco", "--sm-disable", "--no-composite"}}},
      {"icewm", {{"icewm"}}},
      {"fluxbox", {{"fluxbox"}, ""}},
      {"kwin_x11", {{"env", "KWIN_COMPOSE=N", "kwin_x11", "--no-kactivities"}}},
  };
  const auto found = managers.find(name);
  if (found == managers.end()) throw std::runtime_error("unknown window manager " + name);
  return found->second;
}

// The one that PELLOW_WINDOW_MANAGER names, openbox by default.
inline Manager chosenManager() {
  const auto* name = std::getenv("PELLOW_WINDOW_MANAGER");
  return managerNamed(name ? name : "openbox");
}

}  // namespace pellow::desktop
