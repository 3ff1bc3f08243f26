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

}  // namespace
}  // namespace pellow::desktop
