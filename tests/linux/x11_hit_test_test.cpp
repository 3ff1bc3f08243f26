#include <signal.h>

#include <cstdlib>
#include <fstream>
#include <set>

#include "tests/harness/window_manager_choice.h"
#include "tests/linux/x11_desktop_test.h"

// What is under the pointer, with the window manager that PELLOW_WINDOW_MANAGER names; the minimize
// button is a column of the table of scripts/window-managers.

namespace pellow::desktop {
namespace {

// A title bar with the minimize button somewhere, and how its user chooses it.
struct Arrangement {
  std::string file;  // below the home folder; none for what the window manager does by itself
  std::string contents;
  bool hasButton = true;
};

std::vector<Arrangement> arrangements(const std::string& file, const std::string& begin,
                                      const std::string& end, const std::string& mirrored,
                                      const std::string& without) {
  return {{file, begin + without + end, false}, {file, begin + mirrored + end}};
}

// The usual title bar, one with the button on the other side or among others, and one without it.
std::vector<Arrangement> arrangementsOf(const std::string& manager) {
  const std::string settings = ".config/glib-2.0/settings/keyfile";
  if (manager == "i3") return {{.hasButton = false}};
  auto chosen = [&]() -> std::vector<Arrangement> {
    if (manager == "openbox")
      return arrangements(
          ".config/openbox/rc.xml",
          "<openbox_config xmlns=\"http://openbox.org/3.4/rc\"><theme><titleLayout>",
          "</titleLayout></theme></openbox_config>", "CISLM", "NLMC");
    if (manager == "xfwm4")
      return arrangements(
          ".config/xfce4/xfconf/xfce-perchannel-xml/xfwm4.xml",
          "<channel name=\"xfwm4\" version=\"1.0\"><property name=\"general\" "
          "type=\"empty\"><property name=\"button_layout\" type=\"string\" value=\"",
          "\"/></property></channel>", "CHT|SMO", "O|SMC");
    if (manager == "metacity")
      return arrangements(settings, "[org/gnome/desktop/wm/preferences]\nbutton-layout='", "'",
                          "close,minimize,maximize:menu", "menu:maximize,close");
    if (manager == "marco")
      return arrangements(settings, "[org/mate/marco/general]\nbutton-layout='", "'",
                          "close,minimize,maximize:menu", "menu:maximize,close");
    if (manager == "icewm")
      return arrangements(".config/icewm/prefoverride", "TitleButtonsLeft=\"", "\"",
                          "xis\"\nTitleButtonsRight=\"m", "s\"\nTitleButtonsRight=\"xm");
    if (manager == "fluxbox")
      return arrangements(".fluxbox/init", "session.screen0.titlebar.left:\t",
                          "\nsession.screen0.titlebar.right:\tShade Maximize\n",
                          "Stick Close Minimize", "Stick Close");
    return arrangements(".config/kwinrc",
                        "[org.kde.kdecoration2]\nButtonsOnLeft=", "\nButtonsOnRight=AL\n", "XI",
                        "X");
  }();
  if (manager == "metacity")  // by itself it has none
    chosen.push_back({settings,
                      "[org/gnome/desktop/wm/preferences]\n"
                      "button-layout='appmenu:minimize,maximize,close'"});
  chosen.insert(chosen.begin(), {.file = "", .contents = "", .hasButton = manager != "metacity"});
  return chosen;
}

class X11HitTest : public testing::Test {
 protected:
  ~X11HitTest() override {
    setenv("HOME", home_.c_str(), 1);
    for (const auto* name : {"XDG_CONFIG_HOME", "GSETTINGS_BACKEND"}) unsetenv(name);
  }

  void start(const Arrangement& arrangement = {}) {
    x11.reset();
    auto manager = chosenManager();
    manager.command = withSettings(manager.command, arrangement.file, arrangement.contents);
    desktop = std::make_unique<DesktopSession>(DesktopOptions{.windowManager = manager});
    const std::string home = desktop->environment().at("HOME");
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_CONFIG_HOME", desktop->configHome().c_str(), 1);
    setenv("GSETTINGS_BACKEND", "keyfile", 1);
    forgetEverything();
  }

  void forgetEverything() {
    x11 = X11Desktop::open(
              desktop->display(), 1,
              {[](const std::string&) { return std::nullopt; }, [](auto) { return false; }}, log)
              .value();
  }

  std::expected<AXElement, AXError> at(double x, double y) {
    return x11->accessibility().elementAtPosition(x11->accessibility().systemWide(), {x, y},
                                                  patience);
  }
  bool isAt(double x, double y, std::string_view attribute, std::string_view value) {
    const auto found = at(x, y);
    return found && read<std::string>(*found, attribute) == std::string(value);
  }
  bool isButton(const std::expected<AXElement, AXError>& found) {
    return found && read<std::string>(*found, "AXSubrole") == "AXMinimizeButton";
  }

  // The only button on a title bar; it must report the place where it is hit.
  std::optional<AXElement> onlyButton(PixelRect bar) {
    constexpr int rows = 5;  // one row in five is tried
    std::optional<AXElement> button;
    std::set<int> xs;
    std::set<int> ys;
    for (int y = bar.y; y < bar.y + bar.height; y += rows) {
      for (int x = bar.x; x < bar.x + bar.width; ++x) {
        const auto found = at(x, y);
        if (!isButton(found)) continue;
        if (button) EXPECT_EQ(*button, *found);
        button = *found;
        xs.insert(x);
        ys.insert(y);
      }
    }
    if (!button) return std::nullopt;
    const auto origin = read<QuartzPoint>(*button, "AXPosition").value();
    const auto size = read<Size>(*button, "AXSize").value();
    EXPECT_EQ(origin.x, *xs.begin());
    EXPECT_EQ(origin.x + size.width - 1, *xs.rbegin());
    EXPECT_EQ(int(xs.size()), size.width) << "it has gaps";
    EXPECT_LT(std::abs(origin.y - *ys.begin()), rows);
    EXPECT_GT(size.height, 8);
    EXPECT_LT(size.width, 50);
    return button;
  }

  // A real click anywhere near its middle minimizes its window.
  void expectClicksMinimize(const AXElement& button, WindowID window) {
    EXPECT_EQ(read<std::string>(button, "AXRole"), "AXButton");
    const auto parent = read<AXElement>(button, "AXParent").value();
    EXPECT_EQ(read<std::string>(parent, "AXRole"), "AXWindow");
    const auto home = desktop->frame(window);
    for (const double part : {0.5, 0.25, 0.75}) {
      const auto origin = read<QuartzPoint>(button, "AXPosition").value();
      const auto size = read<Size>(button, "AXSize").value();
      const int x = int(origin.x + size.width * part);
      const int y = int(origin.y + size.height / 2);
      ASSERT_TRUE(isButton(at(x, y)));
      // Some window managers and toolkits notice a button only once the pointer moves onto it.
      desktop->movePointer(x - 1, y);
      desktop->click(x, y);
      ASSERT_TRUE(eventually([&] { return read<bool>(parent, "AXMinimized") == true; }))
          << "at " << x << ", " << y;
      // Some window managers move the frame about when they do this.
      EXPECT_TRUE(eventually([&] { return !isButton(at(x, y)); }));
      ASSERT_TRUE(parent.setAttribute("AXMinimized", false, patience));
      ASSERT_TRUE(desktop->activate(window));
      ASSERT_TRUE(eventually([&] { return desktop->frame(window) == home; }));
      ASSERT_TRUE(desktop->standsStill());
    }
  }

  const std::string home_ = std::getenv("HOME") ? std::getenv("HOME") : "/";
  std::unique_ptr<DesktopSession> desktop;
  Log log{[](LogLevel, std::string_view message) { ADD_FAILURE() << message; }};
  std::unique_ptr<X11Desktop> x11;
};

// Whoever paints the screen; mutter has the settings of metacity.
std::string chosenName() {
  const auto name = chosenManagerName();
  return name == "mutter" ? "metacity" : name.substr(0, name.find('-'));
}

TEST_F(X11HitTest, MinimizeButton) {
  for (const auto& arrangement : arrangementsOf(chosenName())) {
    SCOPED_TRACE(arrangement.contents);
    start(arrangement);
    TestClient client(*desktop);
    const auto window = client.open("Guest", {200, 150, 400, 300});
    const auto frame = desktop->frame(window);
    const auto content = desktop->content(window);
    const auto button =
        onlyButton({frame.x - 4, frame.y - 4, frame.width + 8, content.y - frame.y + 20});
    EXPECT_EQ(button.has_value(), arrangement.hasButton);
    if (button) ASSERT_NO_FATAL_FAILURE(expectClicksMinimize(*button, window));
  }
}

// Settings that take longer to read than the caller waits are not taken for the defaults.
TEST_F(X11HitTest, SlowSettingsAreReadAnotherTime) {
  if (chosenManager().command.front() != "openbox")
    GTEST_SKIP() << "it is openbox that takes another name";
  start();
  const auto folder = desktop->configHome() / "programs";
  std::filesystem::create_directory(folder);
  std::ofstream(folder / "gsettings") << "#!/bin/sh\nsleep 1; echo \"'menu:minimize,close'\"";
  std::filesystem::permissions(folder / "gsettings", std::filesystem::perms::owner_all);
  const std::string path = std::getenv("PATH");
  setenv("PATH", (folder.string() + ":" + path).c_str(), 1);
  TestClient client(*desktop);
  const auto frame = desktop->frame(client.open("Guest", {200, 150, 400, 300}));
  // Any window manager may take the name of one whose settings only a program can read.
  const auto check = desktop->values(desktop->root(), "_NET_SUPPORTING_WM_CHECK").at(0);
  client.setTitle(check, "Metacity");
  ASSERT_TRUE(eventually([&] { return desktop->bytes(check, "_NET_WM_NAME") == "Metacity"; }));
  forgetEverything();

  const auto system = x11->accessibility().systemWide();
  x11->accessibility().elementAtPosition(system, {frame.x + 80.0, frame.y + 3.0}, 0.25).value();
  EXPECT_TRUE(onlyButton({frame.x, frame.y + 3, frame.width, 1}));
  setenv("PATH", path.c_str(), 1);
}

class X11HeaderBarTest : public X11HitTest {
 protected:
  // An application with a header bar, on the accessibility bus or not.
  void open(const std::string& program, bool isOnBus) {
    running.reset();
    ASSERT_TRUE(eventually([&] { return desktop->clients().empty(); }));
    Environment environment{{"GSETTINGS_BACKEND", "memory"}, {"NO_AT_BRIDGE", "1"}};
    environment["GTK_A11Y"] = "none";
    if (isOnBus) environment = {{"GSETTINGS_BACKEND", "memory"}, {"NO_AT_BRIDGE", "0"}};
    running = desktop->start({program}, environment);
    ASSERT_TRUE(eventually([&] { return !desktop->clients().empty(); }));
    window = desktop->clients().front();
    ASSERT_TRUE(desktop->activate(window));
    ASSERT_TRUE(eventually([&] { return desktop->isShown(window); }));
    // GTK 4 arranges its window for a while.
    ASSERT_TRUE(
        comesToRest([&] { return bar = desktop->frame(window); }, std::chrono::milliseconds(400)));
    bar.height = 75;
  }

  // Puts GTK's buttons where nobody would look for them.
  void arrange(const std::string& layout) {
    const auto folder = desktop->configHome() / "gtk-3.0";
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "settings.ini") << "[Settings]\ngtk-decoration-layout=" << layout;
    std::ofstream(folder / "gtk.css") << "headerbar { padding: 10px 90px; }";
  }

  bool isButtonAt(const PixelRect& place) {
    return isButton(at(place.x + place.width / 2.0, place.y + place.height / 2.0));
  }
  static PixelRect placeOf(const AXElement& button) {
    const auto origin = read<QuartzPoint>(button, "AXPosition").value();
    const auto size = read<Size>(button, "AXSize").value();
    return {int(origin.x), int(origin.y), int(size.width), int(size.height)};
  }

  const std::string hitori = "/usr/games/hitori";
  std::unique_ptr<ChildProcess> running;
  WindowID window = 0;
  PixelRect bar;
};

TEST_F(X11HeaderBarTest, HeaderBar) {
  start();
  const auto bus = desktop->startSessionBus();
  // GTK 3 and, if it is installed, libadwaita.
  for (const auto& program : {std::string("/usr/bin/adwaita-1-demo"), hitori}) {
    if (!std::filesystem::exists(program)) continue;
    SCOPED_TRACE(program);
    for (const bool isOnBus : {true, false}) {
      ASSERT_NO_FATAL_FAILURE(open(program, isOnBus));
      forgetEverything();
      const auto button = onlyButton(bar);
      ASSERT_TRUE(button);
      ASSERT_NO_FATAL_FAILURE(expectClicksMinimize(*button, window));
    }
  }

  // Without the bus nobody could tell where another theme, or the user's style, puts them.
  arrange("menu:minimize,maximize,close");
  forgetEverything();
  EXPECT_FALSE(onlyButton(bar));
}

TEST_F(X11HeaderBarTest, SaysItselfWhereItsButtonsAre) {
  start();
  // The first application on it starts the accessibility bus.
  auto bus = desktop->startSessionBus();
  PixelRect told;
  for (const auto* layout : {"close,minimize:maximize", "menu:minimize,maximize,close"}) {
    SCOPED_TRACE(layout);
    arrange(layout);
    ASSERT_NO_FATAL_FAILURE(open(hitori, true));
    forgetEverything();
    const auto button = onlyButton(bar);
    ASSERT_TRUE(button);
    ASSERT_NO_FATAL_FAILURE(expectClicksMinimize(*button, window));
    told = placeOf(*button);
  }

  // An application that hangs is not waited for, and is not asked again at every move. The style
  // that it is known to have leaves nothing to guess.
  const auto pid = static_cast<pid_t>(desktop->values(window, "_NET_WM_PID").at(0));
  ASSERT_EQ(kill(pid, SIGSTOP), 0);
  forgetEverything();
  const auto system = x11->accessibility().systemWide();
  const auto begin = std::chrono::steady_clock::now();
  for (int x = bar.x; x < bar.x + bar.width; x += 4) {
    const auto found = x11->accessibility().elementAtPosition(system, {double(x), bar.y + 20.0}, 1);
    EXPECT_FALSE(isButton(found)) << x;
  }
  // Half a second for each of a hundred would be fifty.
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
  ASSERT_EQ(kill(pid, SIGCONT), 0);
  EXPECT_TRUE(eventually([&] { return isButtonAt(told); }));

  // The address of the bus may outlive it.
  bus.reset();
  forgetEverything();
  EXPECT_FALSE(isButtonAt(told));
}

TEST_F(X11HitTest, FindsWindowsAndNothingElse) {
  start(arrangementsOf(chosenName()).back());
  TestClient client(*desktop);
  const auto window = client.open("Below", {100, 100, 400, 300});
  const auto frame = desktop->frame(window);
  ASSERT_TRUE(eventually([&] { return at(300, 250).has_value(); }));
  const auto below = at(300, 250).value();
  EXPECT_EQ(read<std::string>(below, "AXTitle"), "Below");
  EXPECT_EQ(at(frame.x + 80, frame.y + 10), below);
  EXPECT_EQ(errorOf(at(1000, 700)), AXError::noValue);

  const auto bare = client.openUndecorated("Bare", {600, 100, 200, 200});
  for (int x = 600; x < 800; x += 5) EXPECT_FALSE(isButton(at(x, 110))) << bare;
  const auto above = client.open("Above", {frame.x, frame.y, 300, 200});
  EXPECT_TRUE(eventually([&] { return isAt(200, 200, "AXTitle", "Above"); }));
  // Another program's dock does not count as a window.
  client.openDock({0, 0, 1280, 24});
  EXPECT_TRUE(eventually([&] { return isAt(640, 10, "AXRole", "AXApplication"); }));

  const auto bar = desktop->frame(above);
  const auto button = onlyButton({bar.x, bar.y, bar.width, 20});
  client.destroy(above);
  ASSERT_TRUE(eventually([&] { return !desktop->exists(above); }));
  ASSERT_TRUE(button);
  EXPECT_EQ(errorOf(button->copyAttribute("AXRole", patience)), AXError::invalidUIElement);
  EXPECT_EQ(errorOf(button->copyAttribute("AXPosition", patience)), AXError::invalidUIElement);
}

}  // namespace
}  // namespace pellow::desktop
