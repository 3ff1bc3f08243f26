#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/event_monitors.h"
#include "platforms/linux/desktop_shortcuts/accelerator.h"
#include "platforms/linux/desktop_shortcuts/desktop_shortcuts.h"
#include "platforms/linux/desktop_shortcuts/shortcut_settings.h"
#include "platforms/linux/x11/x11_desktop.h"
#include "tests/harness/desktop_session.h"
#include "tests/harness/eventually.h"

// The desktop's own shortcuts, as its settings have them.

namespace pellow::desktop {
namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

constexpr auto chord = modifier::control | modifier::option | modifier::command;

std::string keysOf(std::string_view key, std::uint64_t flags) {
  std::string text;
  for (const auto& [flag, name] : {std::pair{modifier::control, "ctrl-"},
                                   {modifier::option, "alt-"},
                                   {modifier::shift, "shift-"},
                                   {modifier::command, "super-"}})
    if (flags & flag) text += name;
  return text.append(key);
}

Lines lines(const std::vector<DesktopShortcut>& shortcuts) {
  Lines all;
  for (const auto& [key, flags, feature] : shortcuts)
    all.push_back(keysOf(key, flags) + ": " + feature);
  return all;
}

TEST(Accelerator, IsReadAsEachDesktopWritesIt) {
  for (const auto& [text, expected] : std::initializer_list<std::pair<const char*, const char*>>{
           {"<Primary><Alt><Super>t", "ctrl-alt-super-t"},
           {"<ctrl><Mod1><Mod4>Page_Up", "ctrl-alt-super-Page_Up"},
           {"Ctrl+Alt+Meta+PgUp", "ctrl-alt-super-Prior"},
           {"Meta++", "super-+"},
           {"Ctrl+-", "ctrl--"},
           {"C-A-W-t", "ctrl-alt-super-t"},
           {"S-F1", "shift-F1"},
           {"Print", "Print"},
           {"W-", "W-"},
           {"<Hyper>t", ""},
           {"M-t", ""},
           {"<Alt>", ""},
           {"", ""}}) {
    const auto read = parseAccelerator(text);
    EXPECT_EQ(read ? keysOf(read->key, read->modifierFlags) : "", expected) << text;
  }
}

TEST(ShortcutSettings, NameTheFeatures) {
  EXPECT_EQ(lines(shortcutsOfGSettings(
                "org.x.wm switch-to-workspace-1 ['<Super>Home', '<Control>1']\n"
                "org.x.wm close '<Alt>F4'\norg.x.wm lower 'disabled'\norg.x.wm raise @as []\n"
                "org.x.keys screensaver-static ['<Super>l']\n"
                "org.x.custom:/a/ binding '<Super>e'\norg.x.custom:/a/ command 'nautilus'\n"
                "org.x.custom:/a/ name 'Files'\nbroken '\n''\n'")),
            (Lines{"super-Home: Switch to workspace 1", "ctrl-1: Switch to workspace 1",
                   "alt-F4: Close", "super-l: Screensaver", "super-e: Files"}));

  const auto xfce = [](const std::string& custom) {
    return shortcutsOfXfce(
        "<channel><property name='commands'><property name='default'>"
        "<property name='&lt;Alt&gt;F1' type='empty'/></property><property name='custom'>" +
        custom +
        "</property></property><property name='xfwm4'><property name='custom'>"
        "<property name='&lt;Primary&gt;F1' value='workspace_1_key'/></property></property>");
  };
  const auto own = xfce(
      "<property name='&lt;Super&gt;t' value='xterm -e top'><property name='a' "
      "value='b'/></property><property name='override' value='true'/>");
  EXPECT_EQ(lines(own.shortcuts),
            (Lines{"super-t: the command “xterm -e top”", "ctrl-F1: Workspace 1"}));
  EXPECT_TRUE(own.isWhole);
  EXPECT_FALSE(xfce("<property name='override' value='false'/>").isWhole);

  EXPECT_EQ(
      lines(shortcutsOfOpenbox(
          "<c xmlns='http://openbox.org/3.4/rc'><mouse><keybind key='W-m'/></mouse><keyboard>"
          "<keybind key='C-A-Left'><action name='GoToDesktop'><to>left</to><wrap>no</wrap>"
          "</action><action name='Other'/></keybind><keybind key='W-x'><keybind key='y'>"
          "<action name='Close'/></keybind></keybind><keybind key='W-e'><action "
          "name='Execute'><command>xterm</command></action></keybind></keyboard></c>")),
      (Lines{"ctrl-alt-Left: Go to desktop left", "super-x: ", "super-e: the command “xterm”"}));

  EXPECT_EQ(lines(shortcutsOfKDE(
                "[kwin]\n_k_friendly_name=KWin\nExpose=Ctrl+F10\\tMeta+F10,Ctrl+F10,Present "
                "Windows\nSwitch=,Meta+F1,Switch\nNone=none,none,Nothing\nTwo=Meta+2,,One\\, two\n"
                "[services][org.kde.spectacle.desktop]\n_launch=Meta+Print\n")),
            (Lines{"ctrl-F10: Present Windows", "super-F10: Present Windows", "super-2: One, two",
                   "super-Print: org.kde.spectacle"}));
}

class DesktopShortcutsTest : public testing::Test {
 protected:
  DesktopShortcutsTest() {
    std::string name = (fs::temp_directory_path() / "pellow-shortcuts-XXXXXX").string();
    folder = mkdtemp(name.data());
    set("XDG_CONFIG_HOME", (folder / "user").string());
    set("XDG_CONFIG_DIRS", (folder / "machine").string());
    set("PATH", folder.string() + ":" + std::getenv("PATH"));
  }
  ~DesktopShortcutsTest() override {
    for (const auto& [name, value] : former)
      value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    fs::remove_all(folder);
  }

  void set(const std::string& name, const std::string& value) {
    const auto* const now = std::getenv(name.c_str());
    former.emplace(name, now ? std::optional<std::string>(now) : std::nullopt);
    setenv(name.c_str(), value.c_str(), 1);
  }
  fs::path write(const fs::path& file, const std::string& contents) const {
    fs::create_directories((folder / file).parent_path());
    std::ofstream(folder / file) << contents;
    return folder / file;
  }
  Lines found(const std::string& desktop, const std::string& windowManager) {
    set("XDG_CURRENT_DESKTOP", desktop);
    return lines(desktopShortcuts(windowManager));
  }

  fs::path folder;
  std::map<std::string, std::optional<std::string>> former;
};

std::string openboxFile(const std::string& keys) {
  return "<openbox_config><keyboard><keybind key='" + keys +
         "'><action name='ToggleShowDesktop'/></keybind></keyboard></openbox_config>";
}

TEST_F(DesktopShortcutsTest, AreThoseOfTheDesktopThatRuns) {
  const fs::path xfce = "xfce4/xfconf/xfce-perchannel-xml/xfce4-keyboard-shortcuts.xml";
  const auto xfceFile = [](const std::string& keys, const std::string& more = "") {
    return "<channel><property name='xfwm4'><property name='custom'><property name='&lt;Alt&gt;" +
           keys + "' value='close_window_key'/>" + more + "</property></property></channel>";
  };
  write("machine" / xfce, xfceFile("F3"));
  write("user" / xfce, xfceFile("F4"));
  write("machine/openbox/rc.xml", openboxFile("W-d"));
  write("user/kglobalshortcutsrc", "[kwin]\nKill=Meta+k,none,Kill Window\n");
  const auto gsettings = write("gsettings", R"(#!/bin/sh
case $2 in
  *custom-keybinding:/org/a/) echo "x binding '<Super>a'"; echo "x name 'Notes'";;
  org.gnome.settings-daemon*) echo "x custom-keybindings ['/org/a/']";;
  org.gnome.desktop.wm*) echo "x close ['<Alt>F4']";;
  org.mate.Marco.global*) echo "x panel-main-menu '<Alt>F1'";;
  org.cinnamon.desktop.keybindings.wm) echo "x minimize ['<Super>h']";;
  *) exit 1;;
esac
)");
  fs::permissions(gsettings, fs::perms::owner_all);

  const Lines gnome{"alt-F4: Close", "super-a: Notes"};
  const Lines mate{"alt-F1: Panel main menu"};
  const Lines ofXfce{"alt-F4: Close window", "alt-F3: Close window"};
  const Lines openbox{"super-d: Toggle show desktop"};
  for (const auto& [desktop, windowManager, expected] :
       std::initializer_list<std::tuple<const char*, const char*, Lines>>{
           {"", "", {}},
           {"Other", "i3", {}},
           {"ubuntu:GNOME", "GNOME Shell", gnome},
           {"", "Mutter", gnome},
           {"MATE", "Metacity (Marco)", mate},
           {"", "Marco", mate},
           {"MATE", "Metacity", mate},
           {"X-Cinnamon", "Mutter", {"super-h: Minimize"}},
           {"KDE", "KWin", {"super-k: Kill Window"}},
           {"", "Xfwm4", ofXfce},
           {"", "Openbox", openbox},
           {"XFCE", "Openbox", {ofXfce[0], ofXfce[1], openbox[0]}},
       })
    EXPECT_EQ(found(desktop, windowManager), expected) << desktop << " " << windowManager;

  write("user" / xfce, xfceFile("F4", "<property name='override' value='true'/>"));
  EXPECT_EQ(found("", "Xfwm4"), Lines{"alt-F4: Close window"});
}

TEST_F(DesktopShortcutsTest, AreNoneInWhatCannotBeRead) {
  const std::string whole = openboxFile("W-d");
  for (const auto& junk :
       {whole.substr(0, 30), std::string("\0\xff<<<", 5), std::string(),
        "<!DOCTYPE x [<!ENTITY a '&b;&b;'><!ENTITY b '&a;&a;'>]>" + openboxFile("&a;")}) {
    const auto file = write("user/openbox/rc.xml", junk);
    EXPECT_EQ(found("", "Openbox"), Lines{}) << junk;
    fs::remove(file);
  }
  write("user/openbox/rc.xml", whole + std::string(1 << 20, ' '));
  EXPECT_EQ(found("", "Openbox"), Lines{}) << "too large";
  fs::remove(folder / "user/openbox/rc.xml");
  ASSERT_EQ(mkfifo((folder / "user/openbox/rc.xml").c_str(), 0600), 0);
  EXPECT_EQ(found("", "Openbox"), Lines{}) << "nobody writes to the pipe";
  const auto gsettings = write("gsettings", "#!/bin/sh\nsleep 20\necho \"x close '<Alt>F4'\"\n");
  fs::permissions(gsettings, fs::perms::owner_all);
  EXPECT_EQ(found("GNOME", ""), Lines{}) << "nobody waits for it";
}

TEST_F(DesktopShortcutsTest, AreNamedWhereSomebodyHasTheKeys) {
  DesktopSession desktop({.windowManager = managerNamed("openbox")});
  fs::create_directories(desktop.configHome() / "openbox");
  std::ofstream(desktop.configHome() / "openbox" / "rc.xml") << openboxFile("C-A-W-t");
  desktop.restartWindowManager();
  set("XDG_CONFIG_HOME", desktop.configHome().string());
  set("XDG_CURRENT_DESKTOP", "");
  const Log log([](LogLevel, std::string_view) {});
  const auto x11 =
      X11Desktop::open(desktop.display(), 1, {.shortcuts = desktopShortcuts}, log).value();
  const auto reservedBy = [&](std::uint16_t key, std::uint64_t flags = chord) {
    return x11->symbolicHotKeys().reservedBy(key, flags);
  };
  EXPECT_TRUE(eventually([&] { return reservedBy(17) == "Toggle show desktop"; }));
  EXPECT_EQ(reservedBy(15), std::nullopt);
  EXPECT_EQ(reservedBy(17, modifier::command), std::nullopt);
  std::ofstream(desktop.configHome() / "openbox" / "rc.xml") << openboxFile("C-A-W-r");
  EXPECT_EQ(reservedBy(15), std::nullopt) << "written, but nobody acts on it";
  EXPECT_EQ(reservedBy(17), "") << "whoever it is";
}

}  // namespace
}  // namespace pellow::desktop
