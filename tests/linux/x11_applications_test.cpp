#include <signal.h>

#include <algorithm>

#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

class X11Applications : public X11DesktopTest {
 protected:
  using X11DesktopTest::X11DesktopTest;

  // Another window manager takes over while events are handled.
  std::unique_ptr<ChildProcess> replaceWindowManager() {
    const auto count = desktop.clients().size();
    auto successor = desktop.start({"openbox", "--sm-disable", "--replace"});
    EXPECT_TRUE(until(
        [&] { return !desktop.windowManager().isRunning() && desktop.clients().size() == count; }));
    return successor;
  }
};

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

TEST_F(X11DesktopTest, TellsOfOtherDesktopsAndWhatIsOnThem) {
  const auto window = client.open("Document", {100, 50, 300, 200});
  auto& workspace = x11->workspace();
  int changes = 0;
  const auto observer = workspace.onDidChangeActiveSpace([&] { ++changes; });
  ASSERT_TRUE(x11->processEvents());
  EXPECT_FALSE(workspace.hasWindowsOnOtherSpaces(pid));
  ASSERT_TRUE(desktop.switchTo(1));
  EXPECT_TRUE(until([&] { return changes == 1; }));
  EXPECT_TRUE(workspace.hasWindowsOnOtherSpaces(pid));
  EXPECT_FALSE(workspace.hasWindowsOnOtherSpaces(1));

  constexpr std::uint32_t allDesktops = 0xffffffff;
  desktop.sendToDesktop(window, allDesktops);
  EXPECT_TRUE(until([&] { return !workspace.hasWindowsOnOtherSpaces(pid); }));
  EXPECT_EQ(changes, 1);
}

class X11RemoteApplications : public X11Applications {
 protected:
  // The server knows of no process, as if its clients ran on other machines.
  X11RemoteApplications()
      : X11Applications(DesktopOptions{.serverArguments = {"-extension", "X-Resource"}}) {}
};

TEST_F(X11RemoteApplications, AnApplicationWithoutAProcessEndsWithItsLastWindow) {
  const auto window = client.openAnonymous("Remote", {100, 50, 300, 200});
  ASSERT_TRUE(x11->processEvents());
  const auto remote = x11->workspace().runningApplications().front().pid;
  ASSERT_LT(remote, 0);
  std::vector<ProcessID> ended;
  const auto observer = x11->workspace().onDidTerminateApplication(
      [&](ProcessID process) { ended.push_back(process); });
  const auto successor = replaceWindowManager();
  EXPECT_TRUE(ended.empty());
  client.destroy(window);
  EXPECT_TRUE(until([&] { return ended == std::vector{remote}; }));
}

TEST_F(X11Applications, ShowingOneWindowOfAHiddenApplicationShowsItWhateverHappenedBefore) {
  const std::vector both{client.open("First", {100, 50, 300, 200}),
                         client.open("Second", {500, 50, 300, 200})};
  const auto hide = [&] { return x11->workspace().hide(pid) && x11->processEvents(); };
  const auto areHidden = [&](bool hidden) {
    return std::ranges::all_of(both, [&](WindowID window) {
      return desktop.hasState(window, "_NET_WM_STATE_HIDDEN") == hidden;
    });
  };
  const auto show = [&](WindowID window) {
    desktop.changeState(window, "_NET_WM_STATE_HIDDEN", false);
  };
  const auto expectShown = [&] {
    EXPECT_TRUE(until([&] {
      return areHidden(false) && std::ranges::all_of(both, [&](WindowID window) {
               return desktop.values(window, "_PELLOW_HIDDEN").empty();
             });
    }));
  };

  ASSERT_TRUE(hide());
  const auto successor = replaceWindowManager();
  EXPECT_TRUE(areHidden(true));
  show(both[0]);
  expectShown();

  ASSERT_TRUE(hide());
  x11.reset();  // as in a crash
  std::ranges::for_each(both, show);
  ASSERT_TRUE(eventually([&] { return areHidden(false); }));
  x11 = open(desktop.display()).value();
  expectShown();

  // What was reported as failed does not happen later either.
  successor->send(SIGSTOP);
  EXPECT_FALSE(hide());
  successor->send(SIGCONT);
  client.open("Third", {300, 300, 300, 200});  // by then all earlier requests are done
  expectShown();
  ASSERT_TRUE(hide());
  EXPECT_TRUE(areHidden(true));
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
  auto watch = x11->accessibility().observe(application, "AXWindowMiniaturized", note, patience);
  ASSERT_TRUE(watch);
  EXPECT_EQ(
      x11->accessibility().observe(application, "AXUIElementDestroyed", note, patience).error(),
      AXError::notificationUnsupported);
  const auto expectHeard = [&](std::vector<std::string> expected) {
    ASSERT_TRUE(until([&] { return heard.size() >= expected.size(); }));
    EXPECT_EQ(heard, expected);
  };
  const std::vector<std::function<bool()>> nothingForIt{
      [&] { return desktop.switchTo(1) && windows(*x11, pid).empty(); },
      [&] { return desktop.switchTo(0); },
      [&] { return desktop.showBareDesktop(true); },
      [&] { return desktop.showBareDesktop(false); },
      [&] { return x11->workspace().hide(pid); },
      [&] { return x11->workspace().unhide(pid); }};
  for (const auto& act : nothingForIt) ASSERT_TRUE(act() && x11->processEvents());

  desktop.iconify(second);
  expectHeard({"Second"});
  ASSERT_TRUE(element.setAttribute("AXMinimized", true, patience));
  expectHeard({"Second", "First"});
  // Minimized on one desktop, and seen again from another.
  ASSERT_TRUE(desktop.switchTo(1));
  EXPECT_EQ(windows(*x11, pid).size(), 3u);  // with the dialog, which went with its window
  ASSERT_TRUE(element.setAttribute("AXMinimized", false, patience));
  EXPECT_EQ(desktop.values(first, "_NET_WM_DESKTOP"), std::vector<std::uint32_t>{1});
  client.open("Third", {200, 200, 300, 200});
  ASSERT_TRUE(x11->processEvents());
  ASSERT_TRUE(windowNamed(*x11, pid, "Third").setAttribute("AXMinimized", true, patience));
  expectHeard({"Second", "First", "Third"});
  watch->cancel();
  ASSERT_TRUE(element.setAttribute("AXMinimized", true, patience));
  ASSERT_TRUE(x11->processEvents());
  EXPECT_EQ(heard.size(), 3u);

  client.process().kill();
  EXPECT_EQ(
      x11->accessibility().observe(application, "AXWindowMiniaturized", note, patience).error(),
      AXError::invalidUIElement);
}

TEST_F(X11DesktopTest, TellsWhoIsStartedAndWhoHasTheKeys) {
  std::vector<std::string> heard;
  const auto window = client.open("Document", {100, 50, 300, 200});
  ASSERT_TRUE(x11->processEvents());
  const auto note = [&](const std::string& what) {
    return [&heard, what, this](ProcessID process) {
      heard.push_back((process == pid ? "own " : "other ") + what);
    };
  };
  const auto activated = x11->workspace().onDidActivateApplication(note("active"));
  const auto launched = x11->workspace().onDidBecomeRegular(note("launched"));
  const auto expectHeard = [&](const std::vector<std::string>& expected) {
    EXPECT_TRUE(until([&] { return heard.size() >= expected.size(); }));
    std::ranges::sort(heard);
    EXPECT_EQ(std::exchange(heard, {}), expected);
  };

  TestClient other(desktop, "Other");
  other.openDock({0, 0, 200, 20});
  ASSERT_TRUE(x11->processEvents());
  other.open("Other", {500, 400, 300, 200});
  expectHeard({"other active", "other launched"});
  other.open("Other, too", {600, 450, 300, 200});
  ASSERT_TRUE(x11->processEvents());
  ASSERT_TRUE(desktop.activate(window));
  expectHeard({"own active"});
  // When the last window goes and comes back, its application becomes active again.
  other.process().kill();
  desktop.iconify(window);
  ASSERT_TRUE(eventually([&] {
    return desktop.activeWindow() == 0 && desktop.hasState(window, "_NET_WM_STATE_HIDDEN");
  }));
  ASSERT_TRUE(x11->processEvents());
  heard.clear();
  ASSERT_TRUE(desktop.activate(window));
  expectHeard({"own active"});
}

}  // namespace
}  // namespace pellow::desktop
