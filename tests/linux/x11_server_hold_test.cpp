#include <atomic>
#include <map>
#include <thread>

#include "platforms/linux/x11/x11_connection.h"
#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

// Somebody who has the server for himself until the main loop has gone round a number of times, or
// for so long that a loop that waits for the server has not.
class Holder {
 public:
  static constexpr int enough = 50;

  explicit Holder(const std::string& display) : connection_(X11Connection::open(display).value()) {
    const auto grabbed = xcb_grab_server_checked(connection_->raw());
    EXPECT_TRUE(connection_->check(grabbed, deadlineIn(30)));
    release_ = std::jthread([this] {
      for (const auto end = deadlineIn(10); rounds_ < enough && !hasPassed(end);)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      hasLetGo_ = true;
      xcb_ungrab_server(connection_->raw());
      connection_->flush();
    });
  }

  bool hasLetGo() const { return hasLetGo_; }
  void countRound() { ++rounds_; }
  int rounds() const { return rounds_; }

 private:
  std::unique_ptr<X11Connection> connection_;
  std::atomic<int> rounds_ = 0;
  std::atomic<bool> hasLetGo_ = false;
  std::jthread release_;
};

TEST_F(X11DesktopTest, TheMainLoopGoesOnWhileSomebodyHasTheServer) {
  auto& workspace = x11->workspace();
  client.open("Guest", {100, 50, 400, 300});
  const auto second = client.open("Second", {200, 150, 400, 300});
  TestClient neighbour(desktop, "Neighbour");
  const auto shown = neighbour.open("Neighbour", {600, 300, 300, 200});
  const auto neighbourPid = neighbour.process().pid();
  ASSERT_TRUE(until([&] { return workspace.frontmostApplication() == neighbourPid; }));

  std::map<std::string, int> heard;
  const auto hear = [&](const char* what) { return [&heard, what](auto&&...) { ++heard[what]; }; };
  const auto keys = x11->eventMonitors().addGlobalKeyDown(hear("key"));
  const auto launched = workspace.onDidBecomeRegular(hear("launch"));
  const auto ended = workspace.onDidTerminateApplication(hear("end"));
  const auto activated = workspace.onDidActivateApplication(hear("activation"));
  const auto destroyed = x11->accessibility().observe(
      windowNamed(*x11, pid, "Second"), "AXUIElementDestroyed", hear("destroyed"), patience);
  const auto minimized = x11->accessibility().observe(
      x11->accessibility().application(pid), "AXWindowMiniaturized", hear("minimized"), patience);
  ASSERT_TRUE(destroyed && minimized);
  while (x11->processEvents() && !heard.empty()) heard.clear();
  const auto before = workspace.runningApplications().size();
  const auto onScreen = workspace.windowsOnScreen();
  const auto screen = x11->screens().main();
  ASSERT_TRUE(workspace.application(pid));
  x11->setPatient(false);

  // All this is still to be looked at when the server falls silent.
  TestClient newcomer(desktop, "Newcomer");
  newcomer.open("Newcomer", {300, 300, 300, 200});
  client.destroy(second);
  ASSERT_TRUE(eventually([&] { return desktop.clients().size() == 3; }));
  desktop.type({'k'});
  {
    Holder holder(desktop.display());
    EXPECT_TRUE(x11->processEvents());
    EXPECT_TRUE(workspace.hide(neighbourPid));
    for (; !holder.hasLetGo(); holder.countRound()) {
      EXPECT_TRUE(x11->processEvents());
      const auto front = workspace.frontmostApplication();
      const auto applications = workspace.runningApplications().size();
      const bool isKnown = workspace.application(pid).has_value();
      const auto windows = workspace.windowsOnScreen();
      const auto main = x11->screens().main();
      if (holder.hasLetGo()) break;
      EXPECT_EQ(front, neighbourPid);
      EXPECT_EQ(applications, before);
      EXPECT_TRUE(isKnown);
      EXPECT_EQ(windows, onScreen);
      EXPECT_EQ(main, screen);
      EXPECT_TRUE(heard.empty());
    }
    EXPECT_GE(holder.rounds(), Holder::enough);
  }
  const std::map<std::string, int> all{
      {"key", 1}, {"launch", 1}, {"activation", 1}, {"destroyed", 1}};
  EXPECT_TRUE(until([&] { return heard == all && !desktop.isShown(shown); }))
      << testing::PrintToString(heard);
  EXPECT_EQ(workspace.frontmostApplication(), newcomer.process().pid());
  EXPECT_EQ(workspace.runningApplications().size(), before + 1);
  EXPECT_EQ(read<bool>(x11->accessibility().application(neighbourPid), "AXHidden"), true);
}

}  // namespace
}  // namespace pellow::desktop
