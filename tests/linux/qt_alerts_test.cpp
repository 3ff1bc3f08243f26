#include "platforms/linux/qt/qt_alerts.h"

#include <optional>

#include "tests/harness/test_client.h"
#include "tests/linux/qt_desktop_test.h"

namespace pellow::desktop {
namespace {

class QtAlertsTest : public QtDesktopTest {};

TEST_F(QtAlertsTest, TakeTheKeyboardAndGiveItBack) {
  TestClient client(desktop);
  client.open("Mail", {100, 100, 300, 200});
  const auto former = client.open("Notes", {500, 100, 300, 200});
  ASSERT_TRUE(until([&] { return desktop.activeWindow() == former; }));

  QtAlerts alerts(queue);
  std::optional<std::size_t> chosen;
  auto alert = alerts.show({.messageText = "Shall it?", .buttons = {"Yes", "No"}},
                           [&](std::size_t button) { chosen = button; });
  ASSERT_TRUE(until([&] { return isInFront("pellow-alert"); }));
  desktop.type({key::returnKey});
  EXPECT_TRUE(until([&] { return chosen.has_value(); }));
  EXPECT_EQ(chosen, 0u);
  EXPECT_TRUE(until([&] { return desktop.activeWindow() == former; }));

  alert = alerts.show({.messageText = "Shall it now?", .buttons = {"Yes"}},
                      [](std::size_t) { ADD_FAILURE() << "nobody has chosen"; });
  ASSERT_TRUE(until([&] { return isInFront("pellow-alert"); }));
  alert.cancel();
  EXPECT_TRUE(until([&] { return desktop.activeWindow() == former; }));
}

}  // namespace
}  // namespace pellow::desktop
