#include "platforms/linux/x11/x11_desktop.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/uio.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platforms/linux/x11/desktop_entries.h"
#include "platforms/linux/x11/pixel_image.h"
#include "platforms/linux/x11/x11_connection.h"
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
  const auto destroyed = x11->accessibility().observe(
      element, "AXUIElementDestroyed", [&](const AXElement&) { heard.push_back("old destroyed"); });
  const auto neverDestroyed = x11->accessibility().observe(
      other, "AXUIElementDestroyed",
      [&](const AXElement&) { heard.push_back("survivor destroyed"); });
  ASSERT_TRUE(destroyed && neverDestroyed);
  EXPECT_EQ(x11->accessibility().observe(other, "AXUnheardOf", [](const AXElement&) {}).error(),
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
  EXPECT_EQ(x11->accessibility()
                .observe(element, "AXUIElementDestroyed", [](const AXElement&) {})
                .error(),
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

TEST_F(X11DesktopTest, TellsOfWindowsMinimizedByAnybodyAndOfNothingElse) {
  const auto first = client.open("First", {100, 50, 300, 200});
  const auto second = client.open("Second", {500, 50, 300, 200});
  client.openDialog("Question", {500, 350, 200, 100}, second);
  const auto element = windowNamed(*x11, pid, "First");
  std::vector<std::string> heard;
  const auto note = [&](const AXElement& window) {
    heard.push_back(read<std::string>(window, "AXTitle").value_or("?"));
    EXPECT_EQ(window.pid(), pid);
  };
  const auto application = x11->accessibility().application(pid);
  auto watch = x11->accessibility().observe(application, "AXWindowMiniaturized", note);
  ASSERT_TRUE(watch);
  EXPECT_EQ(x11->accessibility().observe(application, "AXUIElementDestroyed", note).error(),
            AXError::notificationUnsupported);
  const auto expectHeard = [&](std::vector<std::string> expected) {
    ASSERT_TRUE(until([&] { return heard.size() >= expected.size(); }));
    EXPECT_EQ(heard, expected);
  };
  const auto isHidden = [&](WindowID window) {
    return desktop.hasState(window, "_NET_WM_STATE_HIDDEN");
  };

  ASSERT_TRUE(desktop.switchTo(1));
  EXPECT_TRUE(windows(*x11, pid).empty());
  ASSERT_TRUE(x11->processEvents());
  ASSERT_TRUE(desktop.switchTo(0));
  ASSERT_TRUE(x11->processEvents());
  ASSERT_TRUE(desktop.showBareDesktop(true));
  ASSERT_TRUE(x11->processEvents());
  ASSERT_TRUE(desktop.showBareDesktop(false));
  desktop.changeState(first, "_NET_WM_STATE_SHADED", true);
  ASSERT_TRUE(eventually([&] { return desktop.hasState(first, "_NET_WM_STATE_SHADED"); }));
  EXPECT_EQ(read<bool>(element, "AXMinimized"), false);
  ASSERT_TRUE(x11->processEvents());
  desktop.changeState(first, "_NET_WM_STATE_SHADED", false);
  ASSERT_TRUE(eventually([&] { return !desktop.hasState(first, "_NET_WM_STATE_SHADED"); }));
  ASSERT_TRUE(x11->workspace().hide(pid));
  ASSERT_TRUE(isHidden(first) && x11->processEvents());
  ASSERT_TRUE(x11->workspace().unhide(pid));
  ASSERT_TRUE(!isHidden(first) && x11->processEvents());

  desktop.iconify(second);
  expectHeard({"Second"});
  ASSERT_TRUE(element.setAttribute("AXMinimized", true));
  expectHeard({"Second", "First"});
  // Minimized on a desktop that is left, and seen again from another one.
  ASSERT_TRUE(desktop.switchTo(1));
  EXPECT_EQ(windows(*x11, pid).size(), 3u);  // with the dialog, which went with its window
  ASSERT_TRUE(element.setAttribute("AXMinimized", false));
  EXPECT_EQ(desktop.values(first, "_NET_WM_DESKTOP"), std::vector<std::uint32_t>{1});
  client.open("Third", {200, 200, 300, 200});
  ASSERT_TRUE(x11->processEvents());
  ASSERT_TRUE(windowNamed(*x11, pid, "Third").setAttribute("AXMinimized", true));
  expectHeard({"Second", "First", "Third"});
  watch->cancel();
  ASSERT_TRUE(element.setAttribute("AXMinimized", true));
  ASSERT_TRUE(x11->processEvents());
  EXPECT_EQ(heard.size(), 3u);

  client.process().kill();
  EXPECT_EQ(x11->accessibility().observe(application, "AXWindowMiniaturized", note).error(),
            AXError::invalidUIElement);
}

TEST_F(X11DesktopTest, TellsWhoIsStartedAndWhoHasTheKeys) {
  std::vector<std::string> heard;
  const auto first = client.open("First", {100, 50, 300, 200});
  ASSERT_TRUE(x11->processEvents());
  const auto name = [&](ProcessID process) { return process == pid ? "own" : "other"; };
  const auto activated = x11->workspace().onDidActivateApplication(
      [&](ProcessID process) { heard.push_back(name(process) + std::string(" active")); });
  const auto launched = x11->workspace().onDidLaunchApplication([&](ProcessID process) {
    heard.push_back(name(process) + std::string(" launched"));
    EXPECT_EQ(x11->workspace().application(process)->activationPolicy, ActivationPolicy::regular);
  });
  const auto focused =
      x11->accessibility().observe(x11->accessibility().application(pid), "AXFocusedWindowChanged",
                                   [&](const AXElement& window) {
                                     heard.push_back(read<std::string>(window, "AXTitle").value());
                                   });
  ASSERT_TRUE(focused);
  const auto expectHeard = [&](std::vector<std::string> expected) {
    EXPECT_TRUE(until([&] { return heard.size() >= expected.size(); }));
    std::ranges::sort(heard);
    std::ranges::sort(expected);
    EXPECT_EQ(std::exchange(heard, {}), expected);
  };

  client.open("Second", {500, 50, 300, 200});
  expectHeard({"Second"});
  TestClient other(desktop, "Other");
  other.openDock({0, 0, 200, 20});
  ASSERT_TRUE(x11->processEvents());
  other.open("Other", {500, 400, 300, 200});
  expectHeard({"other launched", "other active"});
  other.open("Other, too", {600, 450, 300, 200});
  ASSERT_TRUE(x11->processEvents());
  ASSERT_TRUE(desktop.activate(first));
  expectHeard({"own active", "First"});
  // The last window goes and comes back: its application is chosen anew.
  other.process().kill();
  const auto second = windowNamed(*x11, pid, "Second");
  ASSERT_TRUE(second.setAttribute("AXMinimized", true));
  desktop.iconify(first);
  ASSERT_TRUE(eventually([&] {
    return desktop.activeWindow() == 0 && desktop.hasState(first, "_NET_WM_STATE_HIDDEN");
  }));
  ASSERT_TRUE(x11->processEvents());
  heard.clear();
  ASSERT_TRUE(desktop.activate(first));
  expectHeard({"own active", "First"});
}

TEST_F(X11DesktopTest, PointerMovementsGoToOneChainOnly) {
  std::vector<std::string> heard;
  auto global = x11->eventMonitors().addGlobalPointerMoved([&] { heard.push_back("global"); });
  auto local = x11->eventMonitors().addLocalPointerMoved([&] { heard.push_back("local"); });
  ASSERT_TRUE(global && local);
  const auto own = X11Connection::open(desktop.display()).value();
  const auto window = xcb_generate_id(own->raw());
  const std::uint32_t unmanaged = 1;
  xcb_create_window(own->raw(), XCB_COPY_FROM_PARENT, window, own->root(), 300, 300, 100, 100, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                    &unmanaged);
  ASSERT_TRUE(own->check(xcb_map_window_checked(own->raw(), window), deadlineIn(10)));

  for (int x = 10; x < 200; x += 10) desktop.movePointer(x, 20);
  ASSERT_TRUE(until([&] { return !heard.empty(); }));
  EXPECT_EQ(heard.back(), "global");
  // Some of them may still be on their way to the first chain.
  desktop.movePointer(350, 350);
  ASSERT_TRUE(until([&] { return heard.back() == "local"; }));
  EXPECT_EQ(x11->eventMonitors().pointerLocation(), (AppKitPoint{350, 450}));
  const auto before = heard.size();
  desktop.movePointer(360, 350);
  ASSERT_TRUE(until([&] { return heard.size() > before; }));
  EXPECT_EQ(heard.back(), "local");

  global->cancel();
  local->cancel();
  desktop.movePointer(20, 20);  // the last one, upon which nothing is listened to any more
  ASSERT_TRUE(x11->processEvents());
  heard.clear();
  desktop.movePointer(30, 20);
  ASSERT_TRUE(x11->processEvents());
  EXPECT_TRUE(heard.empty());
}

TEST(X11HitTest, FindsWindowsAndTheirMinimizeButtons) {
  const auto configuration =
      std::filesystem::path(testing::TempDir()) / fmt::format("pellow-openbox-{}.xml", getpid());
  std::ofstream(configuration) << "<openbox_config xmlns=\"http://openbox.org/3.4/rc\">"
                                  "<!-- <titleLayout>NLIMC</titleLayout> -->"
                                  "<theme><titleLayout>CISLM</titleLayout></theme>"
                                  "</openbox_config>\n";
  const Log log([](LogLevel, std::string_view message) { ADD_FAILURE() << message; });
  for (const bool isUsual : {true, false}) {
    DesktopOptions options;
    if (!isUsual)
      options.windowManager = {"openbox", "--sm-disable", "--config-file", configuration};
    DesktopSession desktop(options);
    const auto x11 =
        X11Desktop::open(desktop.display(), 1,
                         {[](const std::string&) { return std::nullopt; }, [] { return false; }},
                         log)
            .value();
    TestClient client(desktop);
    const auto window = client.open("Below", {100, 100, 400, 300});
    const auto system = x11->accessibility().systemWide();
    const auto at = [&](double x, double y) {
      return x11->accessibility().elementAtPosition(system, {x, y});
    };
    const auto frame = desktop.frame(window);
    const auto below = at(300, 250).value();
    EXPECT_EQ(read<std::string>(below, "AXTitle"), "Below");
    EXPECT_EQ(errorOf(at(1000, 700)), AXError::noValue);

    // One button, of all that the title bar has, and it is the one that minimizes.
    std::optional<AXElement> button;
    std::vector<double> left;
    for (double x = frame.x; x < frame.x + frame.width; ++x) {
      const auto found = at(x, frame.y + 10);
      ASSERT_TRUE(found);
      if (read<std::string>(*found, "AXSubrole") != "AXMinimizeButton") {
        EXPECT_EQ(*found, below);
        continue;
      }
      if (button) EXPECT_EQ(*button, *found);
      button = *found;
      left.push_back(x);
    }
    ASSERT_TRUE(button);
    EXPECT_EQ(read<std::string>(*button, "AXRole"), "AXButton");
    EXPECT_EQ(read<AXElement>(*button, "AXParent"), below);
    const auto origin = read<QuartzPoint>(*button, "AXPosition").value();
    const auto size = read<Size>(*button, "AXSize").value();
    EXPECT_EQ(origin.x, left.front());
    EXPECT_EQ(size.width, left.size());
    desktop.click(int(origin.x + size.width / 2), int(origin.y + size.height / 2));
    EXPECT_TRUE(eventually([&] { return desktop.hasState(window, "_NET_WM_STATE_HIDDEN"); }));
    EXPECT_EQ(errorOf(at(300, 250)), AXError::noValue);

    ASSERT_TRUE(below.setAttribute("AXMinimized", false));
    const auto above = client.open("Above", {frame.x, frame.y, 300, 200});
    EXPECT_EQ(read<std::string>(at(200, 200).value(), "AXTitle"), "Above");
    // A dock of another program is no window of anybody's.
    client.openDock({0, 0, 1280, 24});
    EXPECT_EQ(read<std::string>(at(640, 10).value(), "AXRole"), "AXApplication");
    client.destroy(above);
    client.destroy(window);
    ASSERT_TRUE(eventually([&] { return !desktop.exists(window); }));
    EXPECT_EQ(errorOf(button->copyAttribute("AXRole")), AXError::invalidUIElement);
    EXPECT_EQ(errorOf(button->copyAttribute("AXPosition")), AXError::invalidUIElement);
  }
  std::filesystem::remove(configuration);
}

// The monitors of a virtual server are what its clients say they are.
class Monitors {
 public:
  explicit Monitors(const std::string& display)
      : connection_(X11Connection::open(display).value()) {
    auto pending = connection_->pending<xcb_randr_get_screen_resources_reply_t>(
        xcb_randr_get_screen_resources(connection_->raw(), connection_->root()));
    const auto resources = pending.collect(deadlineIn(10)).value();
    output_ = *xcb_randr_get_screen_resources_outputs(resources.get());
  }

  // The first one takes the place of the one that the server makes by itself.
  void plug(const std::string& name, PixelRect place, bool isPrimary, bool isFirst = false) {
    // The request as the protocol has it: the function of the library miscounts its length.
    struct {
      xcb_randr_set_monitor_request_t request{};
      xcb_randr_monitor_info_t info{};
      xcb_randr_output_t output = 0;
    } plugged;
    plugged.request.window = connection_->root();
    plugged.info.name = internAtom(connection_->raw(), name);
    plugged.info.primary = isPrimary;
    plugged.info.nOutput = isFirst ? 1 : 0;
    plugged.info.x = static_cast<std::int16_t>(place.x);
    plugged.info.y = static_cast<std::int16_t>(place.y);
    plugged.info.width = static_cast<std::uint16_t>(place.width);
    plugged.info.height = static_cast<std::uint16_t>(place.height);
    plugged.output = output_;
    const auto length = sizeof plugged - (isFirst ? 0 : sizeof plugged.output);
    // The library needs room for two parts of its own.
    std::array<iovec, 3> parts{{{}, {}, {&plugged, length}}};
    const xcb_protocol_request_t protocol{1, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
    xcb_send_request(connection_->raw(), 0, &parts[2], &protocol);
    connection_->flush();
  }
  void unplug(const std::string& name) {
    xcb_randr_delete_monitor(connection_->raw(), connection_->root(),
                             internAtom(connection_->raw(), name));
    connection_->flush();
  }

 private:
  std::unique_ptr<X11Connection> connection_;
  xcb_randr_output_t output_ = 0;
};

TEST_F(X11DesktopTest, MonitorsComeAndGoAroundWindows) {
  int changes = 0;
  const auto observer = x11->screens().onDidChangeParameters([&] { ++changes; });
  const auto frames = [&] {
    std::vector<AppKitRect> found;
    for (const auto& screen : x11->screens().all()) found.push_back(screen.frame);
    return found;
  };
  const auto expectFrames = [&](const std::vector<AppKitRect>& expected) {
    EXPECT_TRUE(until([&] { return frames() == expected; }));
    EXPECT_EQ(frames(), expected);
  };
  // Three of them; the primary one is neither the first nor at the origin of the X screen.
  Monitors monitors(desktop.display());
  monitors.plug("left", {0, 0, 480, 800}, false, true);
  monitors.plug("middle", {480, 100, 480, 600}, true);
  monitors.plug("right", {960, 0, 320, 800}, false);
  expectFrames({{0, 0, 480, 600}, {-480, -100, 480, 800}, {480, -100, 320, 800}});
  const auto leftID = x11->screens().all()[1].displayID;

  const auto window = client.open("Guest", {50, 150, 300, 200});
  const auto home = desktop.frame(window);
  const auto element = windowNamed(*x11, pid, "Guest");
  EXPECT_EQ(read<QuartzPoint>(element, "AXPosition"),
            (QuartzPoint{home.x - 480.0, home.y - 100.0}));
  EXPECT_EQ(x11->screens().main()->frame, AppKitRect(-480, -100, 480, 800));
  move(element, 490, -90);
  EXPECT_EQ(desktop.frame(window), (PixelRect{970, 10, home.width, home.height}));
  EXPECT_EQ(x11->screens().main()->frame, AppKitRect(480, -100, 320, 800));

  // Parked beside the left monitor, which goes.
  move(element, 1 - 480.0 - home.width, home.y - 100.0);
  for (const auto* name : {"right", "middle", "left"}) monitors.unplug(name);
  monitors.plug("middle", {0, 0, 960, 800}, true, true);
  expectFrames({{0, 0, 960, 800}});
  move(element, 200, 100);
  EXPECT_EQ(desktop.frame(window), (PixelRect{200, 100, home.width, home.height}));
  monitors.plug("left", {960, 0, 320, 800}, false);
  expectFrames({{0, 0, 960, 800}, {960, 0, 320, 800}});
  EXPECT_EQ(x11->screens().all()[1].displayID, leftID);

  // A dock takes its share of the monitor that it stands on, until it goes.
  changes = 0;
  const auto dock = client.openDock({0, 0, 960, 30});
  const auto visible = [&](std::size_t index) { return x11->screens().all()[index].visibleFrame; };
  EXPECT_TRUE(until([&] { return visible(0) == AppKitRect(0, 0, 960, 770); }));
  EXPECT_EQ(visible(1), AppKitRect(960, 0, 320, 800));
  EXPECT_EQ(changes, 1);
  client.destroy(dock);
  EXPECT_TRUE(until([&] { return visible(0) == AppKitRect(0, 0, 960, 800); }));
  EXPECT_EQ(changes, 2);
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
