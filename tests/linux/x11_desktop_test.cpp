#include "platforms/linux/x11/x11_desktop.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platforms/linux/x11/desktop_entries.h"
#include "platforms/linux/x11/pixel_image.h"
#include "tests/desktop/eventually.h"
#include "tests/desktop/test_client.h"

// The ports of the X11 adapter against real window managers' doings, looked at from outside.

namespace pellow::desktop {
namespace {

constexpr auto standardWindow = "AXStandardWindow";

template <class Value>
std::expected<Value, AXError> read(const AXElement& element, std::string_view attribute) {
  const auto value = element.copyAttribute(attribute);
  if (!value) return std::unexpected(value.error());
  return std::get<Value>(*value);
}

template <class Value>
AXError errorOf(const std::expected<Value, AXError>& answer) {
  return answer ? AXError::success : answer.error();
}

class X11DesktopTest : public testing::Test {
 protected:
  explicit X11DesktopTest(DesktopOptions options = {}) : desktop(std::move(options)) {}

  using Opened = std::expected<std::unique_ptr<X11Desktop>, SystemError>;

  Opened open(const std::string& display, double scale = 1) {
    X11Desktop::Hooks hooks{.loadIcon = [](const std::string&) { return std::nullopt; },
                            .ownWindowHasKeyboard = [this] { return ownWindowHasKeyboard; }};
    return X11Desktop::open(display, scale, std::move(hooks), log);
  }

  // Handles events until `holds()`; asks again only after something has happened.
  bool until(const std::function<bool()>& holds) {
    return eventually([&] {
      pollfd poller{x11->fileDescriptor(), POLLIN, 0};
      poll(&poller, 1, 10);
      return x11->processEvents() && holds();
    });
  }

  static std::vector<AXElement> windows(X11Desktop& of, ProcessID process) {
    const auto found =
        read<std::vector<AXElement>>(of.accessibility().application(process), "AXWindows");
    return found.value_or(std::vector<AXElement>{});
  }

  static AXElement windowNamed(X11Desktop& of, ProcessID process, std::string_view title) {
    for (const auto& window : windows(of, process))
      if (read<std::string>(window, "AXTitle") == title) return window;
    throw std::runtime_error("no window has this title");
  }

  void move(const AXElement& window, double x, double y) {
    ASSERT_TRUE(window.setAttribute("AXPosition", QuartzPoint{x, y}));
    EXPECT_EQ(read<QuartzPoint>(window, "AXPosition"), (QuartzPoint{x, y}));
  }

  void expectGone(const AXElement& window) {
    for (const auto* attribute : {"AXRole", "AXSubrole", "AXTitle", "AXPosition", "AXMinimized"})
      EXPECT_EQ(errorOf(window.copyAttribute(attribute)), AXError::invalidUIElement) << attribute;
    EXPECT_EQ(errorOf(window.setAttribute("AXPosition", QuartzPoint{5, 5})),
              AXError::invalidUIElement);
    EXPECT_EQ(errorOf(window.setAttribute("AXMinimized", true)), AXError::invalidUIElement);
    EXPECT_EQ(errorOf(window.performAction("AXRaise")), AXError::invalidUIElement);
  }

  DesktopSession desktop;
  bool ownWindowHasKeyboard = false;
  Log log{[](LogLevel, std::string_view message) { ADD_FAILURE() << message; }};
  std::unique_ptr<X11Desktop> x11 = open(desktop.display()).value();
  TestClient client{desktop};
  const ProcessID pid = client.process().pid();
};

TEST_F(X11DesktopTest, TellsApplicationsAndTheirWindows) {
  const auto first = client.open("Erste – первая", {100, 50, 400, 300});
  client.openDialog("Question", {200, 150, 200, 100}, first);
  TestClient other(desktop, "Other");
  other.open("Other", {500, 400, 300, 200});

  const auto application = x11->workspace().application(pid).value();
  EXPECT_EQ(application.bundleID, "Testclient");
  EXPECT_EQ(application.localizedName, "Testclient");
  EXPECT_EQ(application.activationPolicy, ActivationPolicy::regular);
  const auto& icon = dynamic_cast<const PixelImage&>(application.icon.value().object());
  EXPECT_EQ(icon.pixels().front(), 0xff000000 | TestClient::iconLeft);
  EXPECT_EQ(icon.pixels().back(), 0xff000000 | TestClient::iconRight);
  EXPECT_EQ(x11->workspace().application(pid)->icon, application.icon);
  EXPECT_EQ(x11->workspace().runningApplications().front().pid, pid);
  EXPECT_FALSE(x11->workspace().application(1));

  const auto own = windows(*x11, pid);
  ASSERT_EQ(own.size(), 2u);
  EXPECT_EQ(own[0].pid(), pid);
  EXPECT_EQ(read<std::string>(own[0], "AXTitle"), "Erste – первая");
  EXPECT_EQ(read<std::string>(own[0], "AXSubrole"), standardWindow);
  EXPECT_EQ(read<std::string>(own[1], "AXSubrole"), "AXDialog");
  EXPECT_EQ(read<AXElement>(own[0], "AXParent"), x11->accessibility().application(pid));
  EXPECT_EQ(windows(*x11, pid), own);
  const auto frame = desktop.frame(first);
  EXPECT_EQ(read<QuartzPoint>(own[0], "AXPosition"),
            (QuartzPoint{double(frame.x), double(frame.y)}));
  EXPECT_EQ(read<Size>(own[0], "AXSize"), (Size{double(frame.width), double(frame.height)}));

  // Raising chooses the front window, activating brings it forward with the keys.
  EXPECT_EQ(x11->workspace().frontmostApplication(), other.process().pid());
  ASSERT_TRUE(own[0].performAction("AXRaise"));
  ASSERT_TRUE(x11->workspace().activate(pid));
  ASSERT_TRUE(eventually([&] { return desktop.activeWindow() == first; }));
  EXPECT_EQ(x11->workspace().frontmostApplication(), pid);
  EXPECT_EQ(read<AXElement>(x11->accessibility().application(pid), "AXFocusedWindow"), own[0]);
}

TEST_F(X11DesktopTest, WindowsLeaveTheScreenAndComeBackToThePixel) {
  const auto window = client.open("Traveller", {150, 80, 500, 350});
  const auto home = desktop.frame(window);
  const auto element = windowNamed(*x11, pid, "Traveller");
  const auto expectAt = [&](int x, int y) {
    EXPECT_EQ(desktop.frame(window), (PixelRect{x, y, home.width, home.height}));
  };
  // The actions of the program have a thread of their own.
  std::jthread([&] { move(element, 1279, 772); }).join();
  expectAt(1279, 772);
  ASSERT_TRUE(desktop.activate(window));
  expectAt(1279, 772);
  move(element, 1 - home.width, 772);
  expectAt(1 - home.width, 772);
  move(element, home.x, home.y);
  expectAt(home.x, home.y);

  for (const bool fullScreen : {false, true}) {
    const auto state = fullScreen ? "_NET_WM_STATE_FULLSCREEN" : "_NET_WM_STATE_MAXIMIZED_HORZ";
    fullScreen ? client.makeFullScreen(window) : client.maximize(window);
    ASSERT_TRUE(eventually([&] {
      return desktop.hasState(window, state) && desktop.frame(window) == desktop.screen();
    }));
    move(element, 1279, 772);
    expectAt(1279, 772);
    EXPECT_FALSE(desktop.hasState(window, state));
    // Whoever brings it back, another run of the program included.
    const auto next = open(desktop.display()).value();
    move(windowNamed(*next, pid, "Traveller"), 0, 0);
    EXPECT_EQ(desktop.frame(window), desktop.screen());
    EXPECT_TRUE(desktop.hasState(window, state));
    EXPECT_TRUE(desktop.values(window, "_PELLOW_STATE").empty());
  }
}

// Those of the window managers that are installed; openbox, which every other test needs, is.
std::vector<std::string> installedWindowManagers() {
  std::vector<std::string> found;
  for (const auto* name : {"openbox", "fluxbox", "icewm", "metacity"})
    if (std::filesystem::exists(std::filesystem::path("/usr/bin") / name)) found.emplace_back(name);
  return found;
}

class EveryWindowManager : public X11DesktopTest, public testing::WithParamInterface<std::string> {
 protected:
  EveryWindowManager() : X11DesktopTest(DesktopOptions{.windowManager = {GetParam()}}) {}
};

TEST_P(EveryWindowManager, LetsWindowsGoAndTakesThemBack) {
  const auto window = client.open("Guest", {150, 80, 500, 350});
  const auto home = desktop.frame(window);
  const auto element = windowNamed(*x11, pid, "Guest");
  for (const double x : {1279.0, 1.0 - home.width}) {
    move(element, x, 772);
    EXPECT_EQ(desktop.frame(window), (PixelRect{int(x), 772, home.width, home.height}));
    move(element, home.x, home.y);
    EXPECT_EQ(desktop.frame(window), home);
  }

  const auto isMaximized = [&] {
    return desktop.hasState(window, "_NET_WM_STATE_MAXIMIZED_HORZ") &&
           desktop.frame(window).width >= desktop.screen().width;
  };
  client.maximize(window);
  ASSERT_TRUE(eventually(isMaximized));
  move(element, 1279, 772);
  EXPECT_EQ(desktop.frame(window), (PixelRect{1279, 772, home.width, home.height}));
  ASSERT_TRUE(element.setAttribute("AXPosition", QuartzPoint{0, 0}));
  EXPECT_TRUE(isMaximized());

  ASSERT_TRUE(element.setAttribute("AXMinimized", true));
  EXPECT_TRUE(desktop.hasState(window, "_NET_WM_STATE_HIDDEN"));
  ASSERT_TRUE(element.setAttribute("AXMinimized", false));
  EXPECT_FALSE(desktop.hasState(window, "_NET_WM_STATE_HIDDEN"));
  ASSERT_TRUE(x11->workspace().hide(pid));
  EXPECT_EQ(read<bool>(element, "AXMinimized"), false);
  ASSERT_TRUE(x11->workspace().unhide(pid));
  EXPECT_FALSE(desktop.hasState(window, "_NET_WM_STATE_HIDDEN"));
}

INSTANTIATE_TEST_SUITE_P(Installed, EveryWindowManager,
                         testing::ValuesIn(installedWindowManagers()),
                         [](const auto& test) { return test.param; });

TEST_F(X11DesktopTest, ScaledScreensMeasureInPoints) {
  const auto window = client.open("Scaled", {200, 100, 400, 300});
  const auto scaled = open(desktop.display(), 2).value();
  EXPECT_EQ(scaled->screens().main()->frame, AppKitRect(0, 0, 640, 400));
  EXPECT_EQ(scaled->toPixels({10, 20, 30, 40}), (pellow::PixelRect{20, 680, 60, 80}));
  EXPECT_EQ(scaled->fromPixels({20, 680, 60, 80}), AppKitRect(10, 20, 30, 40));
  move(windowNamed(*scaled, pid, "Scaled"), 150.5, 60);
  EXPECT_EQ(desktop.frame(window).x, 301);
  EXPECT_EQ(desktop.frame(window).y, 120);
  desktop.movePointer(300, 200);
  EXPECT_EQ(scaled->eventMonitors().pointerLocation(), (AppKitPoint{150, 300}));
}

TEST_F(X11DesktopTest, MinimizesAndHides) {
  const auto first = client.open("First", {100, 50, 400, 300});
  const auto second = client.open("Second", {300, 250, 400, 300});
  const auto element = windowNamed(*x11, pid, "First");
  const auto isHidden = [&](WindowID window) {
    return desktop.hasState(window, "_NET_WM_STATE_HIDDEN");
  };

  EXPECT_EQ(read<bool>(element, "AXMinimized"), false);
  ASSERT_TRUE(element.setAttribute("AXMinimized", true));
  EXPECT_TRUE(isHidden(first));
  EXPECT_EQ(read<bool>(element, "AXMinimized"), true);
  EXPECT_EQ(windows(*x11, pid).size(), 2u);
  ASSERT_TRUE(element.setAttribute("AXMinimized", false));
  EXPECT_FALSE(isHidden(first));
  EXPECT_EQ(errorOf(element.setAttribute("AXMinimized", std::string("yes"))),
            AXError::illegalArgument);

  ASSERT_TRUE(element.setAttribute("AXMinimized", true));
  ASSERT_TRUE(x11->workspace().hide(pid));
  EXPECT_TRUE(isHidden(second));
  EXPECT_EQ(read<bool>(windowNamed(*x11, pid, "Second"), "AXMinimized"), false);
  ASSERT_TRUE(x11->workspace().unhide(pid));
  EXPECT_FALSE(isHidden(second));
  EXPECT_EQ(read<bool>(element, "AXMinimized"), true);

  // A taskbar shows one window of an application that a run that crashed has hidden.
  ASSERT_TRUE(element.setAttribute("AXMinimized", false));
  ASSERT_TRUE(x11->workspace().hide(pid));
  x11.reset();
  x11 = open(desktop.display()).value();
  EXPECT_TRUE(isHidden(first));
  ASSERT_TRUE(desktop.activate(second));
  EXPECT_TRUE(until([&] { return !isHidden(first); }));
  EXPECT_TRUE(eventually([&] { return desktop.values(first, "_PELLOW_HIDDEN").empty(); }));
  EXPECT_FALSE(x11->workspace().hide(1));
}

TEST_F(X11DesktopTest, WhatIsGoneStaysGone) {
  auto shortLived = std::make_unique<TestClient>(desktop, "Shortlived");
  const ProcessID oldPid = shortLived->process().pid();
  const auto oldWindow = shortLived->open("Old", {100, 50, 300, 200});
  const auto survivor = client.open("Survivor", {300, 250, 300, 200});
  const auto element = windowNamed(*x11, oldPid, "Old");
  const auto other = windowNamed(*x11, pid, "Survivor");

  std::vector<std::string> heard;
  const auto destroyed = x11->accessibility().observe(element, "AXUIElementDestroyed",
                                                      [&] { heard.push_back("old destroyed"); });
  const auto neverDestroyed = x11->accessibility().observe(
      other, "AXUIElementDestroyed", [&] { heard.push_back("survivor destroyed"); });
  ASSERT_TRUE(destroyed && neverDestroyed);
  EXPECT_EQ(x11->accessibility().observe(other, "AXUnheardOf", [] {}).error(),
            AXError::notificationUnsupported);
  const auto ended = x11->workspace().onDidTerminateApplication(
      [&](ProcessID process) { heard.push_back(process == oldPid ? "ended" : "wrong"); });

  ASSERT_TRUE(x11->workspace().application(oldPid));
  shortLived.reset();
  ASSERT_TRUE(until([&] { return heard.size() == 2; }));
  std::ranges::sort(heard);
  EXPECT_EQ(heard, (std::vector<std::string>{"ended", "old destroyed"}));
  expectGone(element);

  // The server gives the XID of the dead window to the next client.
  TestClient heir(desktop, "Heir");
  ASSERT_EQ(heir.open("Heir", {100, 50, 300, 200}), oldWindow);
  expectGone(element);
  const auto heirElement = windowNamed(*x11, heir.process().pid(), "Heir");
  EXPECT_FALSE(heirElement == element);
  EXPECT_EQ(read<std::string>(heirElement, "AXRole"), "AXWindow");
  EXPECT_EQ(x11->accessibility().observe(element, "AXUIElementDestroyed", [] {}).error(),
            AXError::invalidUIElement);
  EXPECT_EQ(errorOf(x11->accessibility().application(oldPid).copyAttribute("AXWindows")),
            AXError::invalidUIElement);
  EXPECT_EQ(read<bool>(other, "AXMinimized"), false) << survivor;
  EXPECT_EQ(heard.size(), 2u);
}

TEST_F(X11DesktopTest, ApplicationThatOnlyClosesItsWindowsHasNotEnded) {
  const auto window = client.open("Only", {100, 50, 300, 200});
  std::vector<ProcessID> ended;
  const auto observer = x11->workspace().onDidTerminateApplication(
      [&](ProcessID process) { ended.push_back(process); });
  ASSERT_TRUE(x11->processEvents());
  client.destroy(window);
  ASSERT_TRUE(until([&] { return !x11->workspace().application(pid); }));
  EXPECT_TRUE(windows(*x11, pid).empty());
  EXPECT_TRUE(ended.empty());
  client.process().kill();
  EXPECT_TRUE(until([&] { return ended == std::vector{pid}; }));
}

TEST_F(X11DesktopTest, KeysGoToOneChainOnly) {
  std::vector<std::string> heard;
  const auto global = x11->eventMonitors().addGlobalKeyDown([&](const KeyEvent& press) {
    heard.push_back(fmt::format("{} {:x} {}", press.keyCode, press.modifierFlags,
                                press.charactersIgnoringModifiers));
  });
  ASSERT_TRUE(global);
  desktop.type({key::control, key::alt, key::super, 't'});
  ASSERT_TRUE(until([&] { return heard.size() == 1; }));
  desktop.type({key::shift, 'k'});
  ASSERT_TRUE(until([&] { return heard.size() == 2; }));

  ownWindowHasKeyboard = true;
  desktop.type({'q'});
  auto older = x11->eventMonitors().addLocalKeyDown([&](const KeyEvent& press) {
    heard.push_back(fmt::format("older {}", press.keyCode));
    return true;
  });
  auto newer = x11->eventMonitors().addLocalKeyDown([&](const KeyEvent& press) {
    heard.push_back(fmt::format("newer {}", press.keyCode));
    return press.keyCode != 53;
  });
  constexpr std::uint8_t escape = 9;  // X key codes, the same in all of today's keyboard files
  constexpr std::uint8_t a = 38;
  EXPECT_TRUE(x11->deliverLocalKeyDown(a, 0));
  EXPECT_FALSE(x11->deliverLocalKeyDown(escape, 0));
  newer->cancel();
  EXPECT_TRUE(x11->deliverLocalKeyDown(escape, 0));

  ASSERT_TRUE(x11->processEvents());
  ownWindowHasKeyboard = false;
  desktop.type({'b'});
  ASSERT_TRUE(until([&] { return heard.back() == "11 0 b"; }));
  EXPECT_EQ(heard, (std::vector<std::string>{"17 1c0000 t", "40 20000 K", "newer 0", "older 0",
                                             "newer 53", "older 53", "11 0 b"}));
}

TEST_F(X11DesktopTest, OneProgramForADisplay) {
  ASSERT_TRUE(x11->claimInstance());
  EXPECT_TRUE(x11->claimInstance());
  auto successor = open(desktop.display()).value();
  EXPECT_FALSE(successor->claimInstance());
  EXPECT_FALSE(successor->waitForInstance(0.01));
  bool isOurs = false;
  std::jthread waiting([&] { isOurs = successor->waitForInstance(30); });
  x11.reset();
  waiting.join();
  EXPECT_TRUE(isOurs);
}

TEST(DesktopEntriesTest, FindTheApplicationOfAWindowClass) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(testing::TempDir()) / fmt::format("pellow-entries-{}", getpid());
  const auto write = [&](const std::string& name, const std::string& keys) {
    fs::create_directories((folder / name).parent_path());
    std::ofstream(folder / name) << "# made here\n[Desktop Entry]\nType=Application\n"
                                 << keys << "\n[Desktop Action new]\nName=New Window\n";
  };
  write("own/org.example.Editor.desktop",
        "Name=Editor\nName[de]=Schreiber\nName[de_AT]=Schreiberling\nIcon=editor");
  write("own/web.desktop", "Name = Web\nStartupWMClass=Surfer");
  write("own/helper.desktop", "Name=Helper\nStartupWMClass=Surfer\nNoDisplay=true");
  write("own/gone.desktop", "Name=Gone\nHidden=true");
  write("system/web.desktop", "Name=Shadowed\nStartupWMClass=Shadow");
  write("system/vendor/tool.desktop", "Name=Tool");

  DesktopEntries entries({folder / "own", folder / "system", folder / "missing"}, "de_DE.UTF-8");
  const auto find = [&](std::string_view instance, std::string_view windowClass) {
    const auto* entry = entries.find(instance, windowClass);
    return entry ? entry->id + "/" + entry->name : "none";
  };
  EXPECT_EQ(find("editor", "Editor"), "org.example.Editor/Schreiber");
  EXPECT_EQ(entries.find("", "org.example.editor")->icon, "editor");
  EXPECT_EQ(find("surfer", "Surfer"), "web/Web");
  EXPECT_EQ(find("", "Shadow"), "none");
  EXPECT_EQ(find("gone", "Gone"), "none");
  EXPECT_EQ(find("", "vendor-tool"), "vendor-tool/Tool");
  EXPECT_EQ(find("", ""), "none");

  // An application that is installed meanwhile.
  write("own/late.desktop", "Name=Late");
  fs::last_write_time(folder / "own", fs::file_time_type::clock::now() + std::chrono::hours(1));
  EXPECT_EQ(find("late", "Late"), "late/Late");
  fs::remove_all(folder);
}

TEST(X11DesktopFailures, AreSentencesAndValues) {
  const Log log([](LogLevel, std::string_view) {});
  const auto open = [&](const std::string& display) {
    return X11Desktop::open(
        display, 1, {[](const std::string&) { return std::nullopt; }, [] { return false; }}, log);
  };
  EXPECT_EQ(open(":9999").error().sentence,
            "The X display \":9999\" cannot be opened; set DISPLAY to a running X server that this "
            "user may use.");
  auto desktop = std::make_unique<DesktopSession>(DesktopOptions{.windowManager = {}});
  EXPECT_NE(open(desktop->display()).error().sentence.find("No window manager"), std::string::npos);

  desktop = std::make_unique<DesktopSession>();
  auto client = std::make_unique<TestClient>(*desktop);
  const auto window = client->open("Lost", {100, 50, 300, 200});
  const auto x11 = open(desktop->display()).value();
  const auto application = x11->accessibility().application(client->process().pid());
  const auto element = read<std::vector<AXElement>>(application, "AXWindows")->front();
  EXPECT_TRUE(x11->processEvents());
  EXPECT_TRUE(desktop->exists(window));
  client.reset();
  desktop.reset();
  EXPECT_TRUE(eventually([&] { return !x11->processEvents(); }));
  EXPECT_FALSE(x11->connectionError().sentence.empty());
  EXPECT_EQ(errorOf(element.setAttribute("AXPosition", QuartzPoint{1, 1})),
            AXError::cannotComplete);
  EXPECT_EQ(errorOf(element.copyAttribute("AXRole")), AXError::cannotComplete);
  EXPECT_EQ(errorOf(application.copyAttribute("AXWindows")), AXError::cannotComplete);
  EXPECT_FALSE(x11->workspace().frontmostApplication());
  EXPECT_FALSE(x11->screens().all().empty());
}

}  // namespace
}  // namespace pellow::desktop
