#include "platforms/linux/x11/x11_desktop.h"

#include <thread>

#include "tests/linux/x11_desktop_test.h"

namespace pellow::desktop {
namespace {

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
