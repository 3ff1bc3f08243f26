#include "platforms/linux/desktop_shortcuts/desktop_shortcuts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <system_error>

#include "platforms/linux/desktop_shortcuts/shortcut_settings.h"
#include "platforms/linux/system/environment.h"
#include "platforms/linux/system/files.h"
#include "platforms/linux/system/programs.h"
#include "platforms/linux/system/user_folders.h"

namespace pellow {
namespace {

namespace fs = std::filesystem;

using Shortcuts = std::vector<DesktopShortcut>;

// Who has shortcuts. The first three keep them in gsettings, and their window managers with them.
enum class Keeper { gnome, mate, cinnamon, xfce, kde, openbox };

struct KeeperName {
  std::string_view name;
  Keeper keeper;
};

// As XDG_CURRENT_DESKTOP calls them.
constexpr std::array desktops{
    KeeperName{"GNOME", Keeper::gnome},       KeeperName{"Unity", Keeper::gnome},
    KeeperName{"Budgie", Keeper::gnome},      KeeperName{"Pantheon", Keeper::gnome},
    KeeperName{"MATE", Keeper::mate},         KeeperName{"X-Cinnamon", Keeper::cinnamon},
    KeeperName{"Cinnamon", Keeper::cinnamon}, KeeperName{"XFCE", Keeper::xfce},
    KeeperName{"KDE", Keeper::kde},
};

// As `WindowManagerTraits` does.
constexpr std::array windowManagers{
    KeeperName{"GNOME Shell", Keeper::gnome}, KeeperName{"Mutter", Keeper::gnome},
    KeeperName{"Metacity", Keeper::gnome},    KeeperName{"Metacity (Marco)", Keeper::mate},
    KeeperName{"Marco", Keeper::mate},        KeeperName{"Muffin", Keeper::cinnamon},
    KeeperName{"Xfwm4", Keeper::xfce},        KeeperName{"KWin", Keeper::kde},
    KeeperName{"Openbox", Keeper::openbox},
};

constexpr std::array gnomeSchemas{"org.gnome.desktop.wm.keybindings", "org.gnome.shell.keybindings",
                                  "org.gnome.mutter.keybindings",
                                  "org.gnome.settings-daemon.plugins.media-keys"};
constexpr std::array mateSchemas{"org.mate.Marco.global-keybindings",
                                 "org.mate.Marco.window-keybindings",
                                 "org.mate.SettingsDaemon.plugins.media-keys"};
constexpr std::array cinnamonSchemas{"org.cinnamon.desktop.keybindings.wm",
                                     "org.cinnamon.desktop.keybindings",
                                     "org.cinnamon.desktop.keybindings.media-keys"};

constexpr std::uintmax_t largestFile = 1 << 20;  // bytes
constexpr std::chrono::seconds patience{1};

using Deadline = std::chrono::steady_clock::time_point;

bool isInGSettings(Keeper keeper) {
  return keeper == Keeper::gnome || keeper == Keeper::mate || keeper == Keeper::cinnamon;
}

std::optional<Keeper> find(std::span<const KeeperName> names, std::string_view name) {
  const auto found = std::ranges::find(names, name, &KeeperName::name);
  return found == names.end() ? std::nullopt : std::optional(found->keeper);
}

std::vector<Keeper> keepers(std::string_view windowManager) {
  std::vector<Keeper> all;
  const auto names = environment("XDG_CURRENT_DESKTOP");
  for (const auto part : std::views::split(names, ':'))
    if (const auto keeper = find(desktops, std::string_view(part.begin(), part.end())))
      all.push_back(*keeper);
  const auto own = find(windowManagers, windowManager);
  const bool isKnown = own && (std::ranges::count(all, *own) > 0 ||
                               (isInGSettings(*own) && std::ranges::any_of(all, isInGSettings)));
  if (own && !isKnown) all.push_back(*own);
  return all;
}

// Nothing of a file that is too large. What is no file has no size.
std::string contents(const fs::path& file) {
  std::error_code error;
  if (fs::file_size(file, error) > largestFile) return {};
  return readFile(file).value_or("");
}

void append(Shortcuts& all, const Shortcuts& more) {
  all.insert(all.end(), more.begin(), more.end());
}

std::string listing(const std::string& schema, Deadline deadline) {
  return outputOf({"gsettings", "list-recursively", schema}, deadline).value_or("");
}

// Those that the user has made; each is at a path of its own.
Shortcuts customShortcuts(const std::string& listingOfAll, const std::string& schema,
                          Deadline deadline) {
  Shortcuts all;
  std::string_view rest = listingOfAll;
  constexpr std::string_view folder = "'/org/";
  for (auto at = rest.find(folder); at != std::string_view::npos; at = rest.find(folder)) {
    rest.remove_prefix(at + 1);
    const std::string path(rest.substr(0, rest.find('\'')));
    append(all, shortcutsOfGSettings(listing(schema + ":" + path, deadline)));
  }
  return all;
}

Shortcuts inGSettings(std::span<const char* const> schemas, const std::string& customSchema) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  Shortcuts all;
  for (const auto* const schema : schemas) {
    const auto text = listing(schema, deadline);
    append(all, shortcutsOfGSettings(text));
    if (!customSchema.empty()) append(all, customShortcuts(text, customSchema, deadline));
  }
  return all;
}

Shortcuts ofXfce() {
  Shortcuts all;
  for (const auto& folder : configurationFolders()) {
    const auto [shortcuts, isWhole] = shortcutsOfXfce(contents(
        folder / "xfce4" / "xfconf" / "xfce-perchannel-xml" / "xfce4-keyboard-shortcuts.xml"));
    append(all, shortcuts);
    if (isWhole) break;
  }
  return all;
}

Shortcuts ofOpenbox() {
  for (const auto& folder : configurationFolders())
    if (const auto text = contents(folder / "openbox" / "rc.xml"); !text.empty())
      return shortcutsOfOpenbox(text);
  return {};
}

Shortcuts shortcutsOf(Keeper keeper) {
  switch (keeper) {
    case Keeper::gnome:
      return inGSettings(gnomeSchemas,
                         "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding");
    case Keeper::mate:
      return inGSettings(mateSchemas, "");
    case Keeper::cinnamon:
      return inGSettings(cinnamonSchemas, "");
    case Keeper::xfce:
      return ofXfce();
    case Keeper::kde:
      return shortcutsOfKDE(contents(configurationFolder() / "kglobalshortcutsrc"));
    case Keeper::openbox:
      return ofOpenbox();
  }
  return {};
}

}  // namespace

std::vector<DesktopShortcut> desktopShortcuts(std::string_view windowManager) {
  Shortcuts all;
  for (const auto keeper : keepers(windowManager)) append(all, shortcutsOf(keeper));
  return all;
}

}  // namespace pellow
