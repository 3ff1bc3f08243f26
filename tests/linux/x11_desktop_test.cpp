#include <thread>

#include "platforms/linux/x11/x11_connection.h"
#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

// How the program ends then, and why it may not start at all, is told by the tests from outside.
TEST_F(X11DesktopTest, NothingWaitsForAServerThatIsGone) {
  client.open("Lost", {100, 50, 300, 200});
  const auto application = x11->accessibility().application(pid);
  const auto element = windows(*x11, pid).front();
  ASSERT_TRUE(x11->processEvents());
  desktop.killServer();
  EXPECT_TRUE(eventually([&] { return !x11->processEvents(); }));
  EXPECT_FALSE(x11->connectionError().sentence.empty());
  EXPECT_EQ(errorOf(element.setAttribute("AXPosition", QuartzPoint{1, 1})),
            AXError::cannotComplete);
  EXPECT_EQ(errorOf(element.copyAttribute("AXRole")), AXError::cannotComplete);
  EXPECT_EQ(errorOf(application.copyAttribute("AXWindows")), AXError::cannotComplete);
  EXPECT_FALSE(x11->workspace().frontmostApplication());
  EXPECT_FALSE(x11->screens().all().empty());
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
  somebody->flush();

  EXPECT_TRUE(why(other->claimInstance()).contains("Another Pellow runs")) << "nothing was taken";
  std::jthread end([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    x11.reset();
  });
  EXPECT_TRUE(other->waitForInstance(30));
}

}  // namespace
}  // namespace pellow::desktop
