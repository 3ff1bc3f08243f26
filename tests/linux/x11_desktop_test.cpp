#include <array>
#include <atomic>
#include <thread>

#include "platforms/linux/system/thread_serial_queue.h"
#include "platforms/linux/x11/x11_connection.h"
#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

// How the program then ends, and why it may not start at all, is left to the desktop tests.
TEST_F(X11DesktopTest, NothingWaitsForAServerThatIsGone) {
  client.open("Lost", {100, 50, 300, 200});
  const auto application = x11->accessibility().application(pid);
  const auto element = windows(*x11, pid).front();
  ASSERT_TRUE(x11->processEvents());
  desktop.killServer();
  EXPECT_TRUE(eventually([&] { return !x11->processEvents(); }));
  EXPECT_FALSE(x11->connectionError().sentence.empty());
  EXPECT_EQ(errorOf(element.setAttribute("AXPosition", QuartzPoint{1, 1}, patience)),
            AXError::cannotComplete);
  EXPECT_EQ(errorOf(element.copyAttribute("AXRole", patience)), AXError::cannotComplete);
  EXPECT_EQ(errorOf(application.copyAttribute("AXWindows", patience)), AXError::cannotComplete);
  EXPECT_FALSE(x11->workspace().frontmostApplication());
  EXPECT_FALSE(x11->screens().all().empty());
}

TEST(X11Desktop, WaitsForAWindowManagerOnlySoLong) {
  DesktopSession bare({.windowManager = {}});
  const Log log([](LogLevel, std::string_view) {});
  X11Desktop::awaitWindowManager(bare.display(), 0.1, log);
  const auto opened = X11Desktop::open(bare.display(), 1, {}, log);
  ASSERT_FALSE(opened);
  EXPECT_TRUE(opened.error().sentence.contains("No window manager")) << opened.error().sentence;

  // One that cannot do all that it takes, as those of some Wayland compositors.
  const auto manager = X11Connection::open(bare.display()).value();
  const auto atom = [&](const char* name) { return internAtom(manager->raw(), name); };
  const auto check = xcb_generate_id(manager->raw());
  xcb_create_window(manager->raw(), 0, check, manager->root(), 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0, nullptr);
  for (const auto window : {check, manager->root()})
    xcb_change_property(manager->raw(), XCB_PROP_MODE_REPLACE, window,
                        atom("_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_WINDOW, 32, 1, &check);
  const std::array hints{atom("_NET_ACTIVE_WINDOW"), atom("_NET_CLIENT_LIST")};
  xcb_change_property(manager->raw(), XCB_PROP_MODE_REPLACE, manager->root(),
                      atom("_NET_SUPPORTED"), XCB_ATOM_ATOM, 32, hints.size(), hints.data());
  ASSERT_TRUE(manager->isAnswered(deadlineIn(30)));
  const auto lacking = X11Desktop::open(bare.display(), 1, {}, log);
  ASSERT_FALSE(lacking);
  EXPECT_TRUE(lacking.error().sentence.contains("lacks _NET_MOVERESIZE_WINDOW,"))
      << lacking.error().sentence;
}

TEST_F(X11DesktopTest, OnlyAnAnsweringServerMakesAProgramTheOnePellow) {
  const auto why = [](const std::expected<void, SystemError>& claimed) {
    return claimed ? "it is the one" : claimed.error().sentence;
  };
  ASSERT_TRUE(x11->claimInstance());
  const auto other = open(desktop.display()).value();
  EXPECT_TRUE(why(other->claimInstance()).contains("Another Pellow runs"));
  EXPECT_TRUE(why(other->waitForInstance(0.1)).contains("has not ended"));

  const auto somebody = X11Connection::open(desktop.display()).value();
  const auto grabbed = xcb_grab_server_checked(somebody->raw());
  ASSERT_TRUE(somebody->check(grabbed, deadlineIn(30)));
  EXPECT_TRUE(why(other->claimInstance()).contains("did not answer"));
  xcb_ungrab_server(somebody->raw());
  ASSERT_TRUE(somebody->isAnswered(deadlineIn(30)));

  EXPECT_TRUE(why(other->claimInstance()).contains("Another Pellow runs")) << "nothing was taken";
  std::jthread end([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    x11.reset();
  });
  EXPECT_TRUE(other->waitForInstance(30));
}

// As in the program: actions on a thread of their own, while the main thread hears of everything,
// asks, activates and hides. For the thread sanitizer above all.
TEST_F(X11DesktopTest, ActionsGoOnBesideTheMainThread) {
  TestClient other(desktop, "Other");
  other.open("Neighbour", {600, 400, 300, 200});
  const auto otherPid = other.process().pid();
  const auto window = client.open("Guest", {150, 80, 500, 350});
  const auto home = desktop.frame(window);
  const auto element = windowNamed(*x11, pid, "Guest");

  std::atomic<int> rounds = 0;
  const auto goAndCome = [&] {
    (void)windows(*x11, otherPid);
    for (const bool minimized : {true, false}) {
      (void)element.setAttribute("AXPosition", QuartzPoint{1279, 772}, patience);
      (void)element.setAttribute("AXMinimized", minimized, patience);
    }
    (void)element.setAttribute("AXPosition", QuartzPoint{double(home.x), double(home.y)}, patience);
    (void)element.performAction("AXRaise", patience);
    ++rounds;
  };
  ThreadSerialQueue queue("com.velloway.pellow.test");
  std::vector<Subscription> work;
  for (int round = 0; round < 4; ++round) work.push_back(queue.async(goAndCome));
  other.storm(20);
  EXPECT_TRUE(until([&] {
    (void)x11->workspace().runningApplications();
    (void)x11->screens().all();
    x11->workspace().hide(otherPid);
    x11->workspace().unhide(otherPid);
    x11->workspace().activate(otherPid);
    return rounds == 4;
  }));
  other.awaitCalm();
  EXPECT_TRUE(until([&] { return desktop.frame(window) == home; }));
}

}  // namespace
}  // namespace pellow::desktop
