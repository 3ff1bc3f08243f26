#include "platforms/linux/system/url_opener.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <ranges>
#include <string>
#include <vector>

#include "platforms/linux/system/environment.h"
#include "platforms/linux/system/programs.h"

namespace pellow {

namespace {

using Command = std::vector<std::string>;

struct SettingsProgram {
  std::string_view desktop;  // as XDG_CURRENT_DESKTOP calls it
  std::string_view program;
};

constexpr std::array settingsPrograms{
    SettingsProgram{"GNOME", "gnome-control-center"},
    SettingsProgram{"Unity", "unity-control-center"},
    SettingsProgram{"Budgie", "budgie-control-center"},
    SettingsProgram{"Pantheon", "io.elementary.settings"},
    SettingsProgram{"Pantheon", "io.elementary.switchboard"},
    SettingsProgram{"X-Cinnamon", "cinnamon-settings"},
    SettingsProgram{"KDE", "systemsettings"},
    SettingsProgram{"KDE", "systemsettings5"},
    SettingsProgram{"XFCE", "xfce4-settings-manager"},
    SettingsProgram{"MATE", "mate-control-center"},
    SettingsProgram{"LXQt", "lxqt-config"},
    SettingsProgram{"Deepin", "dde-control-center"},
};

bool start(const Command& command) {
  const auto program = findProgram(command.front());
  if (!program) return false;
  Command withPath = command;
  withPath.front() = *program;
  return startProgram(withPath, ProgramOutput::discarded).has_value();
}

bool openSettings() {
  const auto desktops = environment("XDG_CURRENT_DESKTOP");
  for (const auto part : std::views::split(desktops, ':')) {
    const std::string_view desktop(part);
    for (const auto& candidate : settingsPrograms)
      if (candidate.desktop == desktop && start({std::string(candidate.program)})) return true;
  }
  return false;
}

bool startsWithAny(std::string_view url, std::initializer_list<std::string_view> schemes) {
  return std::ranges::any_of(schemes, [&](auto scheme) { return url.starts_with(scheme); });
}

}  // namespace

bool openURL(std::string_view url) {
  if (url.starts_with("x-apple.systempreferences:com.apple.preference.security"))
    return openSettings();
  if (!startsWithAny(url, {"http://", "https://", "file://"})) return false;
  const std::string text(url);
  return start({"xdg-open", text}) || start({"gio", "open", text}) || start({"exo-open", text});
}

}  // namespace pellow
