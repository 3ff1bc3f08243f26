#include "platforms/linux/qt/qt_alerts.h"

#include <optional>
#include <thread>

#include "tests/harness/test_client.h"
#include "tests/linux/qt_desktop_test.h"

namespace pellow::desktop {
namespace {

class QtAlertsTest : public QtDesktopTest {};

TEST_F(QtAlertsTest, GiveTheKeyboardBackWhenTheyAreTakenAway) {
  TestClient client(desktop);
  client.open("Mail", {100, 100, 300, 200});
  const auto former = client.open("Notes", {500, 100, 300, 200});
  ASSERT_TRUE(until([&] { return desktop.activeWindow() == former; }));

  QtAlerts alerts(queue);
  auto alert = alerts.show({.messageText = "Shall it?", .buttons = {"Yes"}},
                           [](std::size_t) { ADD_FAILURE() << "nobody has chosen"; });
  ASSERT_TRUE(until([&] { return isInFront("pellow-alert"); }));
  alert.cancel();
  EXPECT_TRUE(until([&] { return desktop.activeWindow() == former; }));
}

// The user is typing in another window.
TEST_F(QtAlertsTest, AKeyThatWasMeantForAnotherWindowIsNoAnswer) {
  TestClient client(desktop);
  client.open("Notes", {500, 100, 300, 200});
  QtAlerts alerts(queue);
  std::optional<std::size_t> chosen;
  const auto show = [&] {
    return alerts.show({.messageText = "Shall it?", .buttons = {"Yes", "No"}},
                       [&](std::size_t button) { chosen = button; });
  };
  // The program comes late to what was typed.
  const auto later = [&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    for (int round = 0; round < 20; ++round) work();
  };
  auto alert = show();
  ASSERT_TRUE(until([&] { return desktop.hasKeyboard(shown("pellow-alert")); }));
  for (const auto press : {key::returnKey, key::escape, KeySym{' '}}) desktop.type({press});
  later();
  EXPECT_FALSE(chosen) << "as it appeared";
  later();
  for (const auto press : {KeySym{'a'}, key::returnKey}) desktop.type({press});
  later();
  EXPECT_FALSE(chosen) << "in the middle of a text";
  alert.cancel();

  std::jthread typist([&] { desktop.hold(key::returnKey); });
  alert = show();
  ASSERT_TRUE(until([&] { return isInFront("pellow-alert"); }));
  typist.join();
  later();
  EXPECT_FALSE(chosen) << "held down since before";
  desktop.type({key::returnKey});
  EXPECT_TRUE(until([&] { return chosen.has_value(); }));
  EXPECT_EQ(chosen, 0u);
}

}  // namespace
}  // namespace pellow::desktop
