#include <QCoreApplication>

#include "tests/harness/everyday.h"
#include "tests/linux/notifier_host.h"
#include "tests/linux/tray.h"

// The menu of the status item, wherever the desktop shows it.

namespace pellow::desktop {
namespace {

class MenuBar : public Everyday {
 protected:
  // Of the process that runs now.
  void openStatusMenu() {
    if (!tray) tray.emplace(desktop.display(), 0xe8e8e8U);
    ASSERT_TRUE(eventually([&] {
      tray->work();
      return tray->docked() != docked && isIconPainted();
    }));
    docked = tray->docked();
    openMenu(Tray::icon.x + 12, Tray::icon.y + 12, 1);
  }
  void openMenu(int x, int y, std::uint8_t button) {
    desktop.click(x, y, button);
    ASSERT_TRUE(eventually([&] { return showsMenu(); })) << pellow->process().standardError();
    // From then on it has the keyboard.
    ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  }
  bool isIconPainted() const {
    const auto icon = desktop.picture(Tray::icon);
    return icon.count(icon.at(0, 0)) < icon.width * icon.height;
  }
  bool showsMenu() const { return !desktop.shownWindows("pellow", "pellow-menu").empty(); }
  // An item counted from the end.
  void choose(int fromEnd) {
    desktop.movePointer(5, 5);  // where it selects none
    ASSERT_TRUE(desktop.answersPing(pellow->strip()));
    for (int step = 0; step < fromEnd; ++step) desktop.type({key::up});
    desktop.type({key::returnKey});
    EXPECT_TRUE(eventually([&] { return !showsMenu(); }));
  }
  static constexpr int quit = 1;
  static constexpr int relaunch = 2;
  static constexpr int bringBack = 5;

  std::optional<Tray> tray;
  WindowID docked = 0;
  TestClient client{desktop};
  TestClient sleeper{desktop, "Sleeper"};
  Guest letter = open(client, "Letter", {100, 120, 400, 300});
  Guest note = open(sleeper, "Note", {600, 300, 400, 300});
};

TEST_F(MenuBar, AHostOperatesItOverTheSessionBus) {
  const auto address = desktop.environment().at("DBUS_SESSION_BUS_ADDRESS");
  const auto bus = desktop.startSessionBus();
  int count = 1;
  char name[] = "host";
  char* arguments[] = {name, nullptr};
  const QCoreApplication application(count, arguments);
  NotifierHost host(address);
  ASSERT_TRUE(host.startWatcher());
  host.startHost();
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_TRUE(eventually([&] {
    QCoreApplication::processEvents();
    return !host.items().empty();
  })) << pellow->process().standardError();
  const auto item = host.items().front();
  const auto tells = [&](const std::string& line) {
    return eventually([&] { return std::ranges::count(host.menu(item), line) == 1; });
  };

  EXPECT_TRUE(tells("Restore All Tabs (disabled)")) << testing::PrintToString(host.menu(item));
  EXPECT_EQ(host.menu(item).size(), 11);
  host.choose(item, "Pellow Everything");
  expectAway({letter, note});
  EXPECT_TRUE(tells("Restore All Tabs"));
  host.choose(item, "✓ Keep Tabs Above Other Windows");
  EXPECT_TRUE(tells("Keep Tabs Above Other Windows"));
  host.choose(item, "Restore All Tabs");
  expectHome({letter, note});
  EXPECT_TRUE(tells("Restore All Tabs (disabled)"));
  ASSERT_TRUE(desktop.activate(letter.window));
  host.choose(item, "Pellow Frontmost Window");
  expectAway({letter});
  host.choose(item, "Quit Pellow");
  EXPECT_EQ(pellow->process().exitStatus(), 0) << pellow->process().standardError();
  expectHome({letter, note});
}

// Beside an application that hangs.
TEST_F(MenuBar, RelaunchAndQuitInATrayBringEveryWindowBack) {
  ASSERT_NO_FATAL_FAILURE(launch());
  press('a');
  ASSERT_TRUE(hasTabs(2));
  sleeper.process().send(SIGSTOP);
  const auto processOf = [&](WindowID strip) { return desktop.values(strip, "_NET_WM_PID"); };
  const auto before = processOf(pellow->strip());
  ASSERT_NO_FATAL_FAILURE(openStatusMenu());
  choose(relaunch);
  EXPECT_EQ(pellow->process().exitStatus(), 0) << pellow->process().standardError();
  expectHome({letter, note});
  ASSERT_TRUE(eventually([&] { return pellow->strip() != 0; }));
  EXPECT_NE(processOf(pellow->strip()), before);
  EXPECT_TRUE(desktop.answersPing(pellow->strip()));

  press('a');
  ASSERT_TRUE(hasTabs(2));
  ASSERT_NO_FATAL_FAILURE(openStatusMenu());
  choose(quit);
  EXPECT_TRUE(eventually([&] { return pellow->strip() == 0; }));
  expectHome({letter, note});
}

TEST_F(MenuBar, IsOnAStripWhereThereIsNoPlaceForIt) {
  ASSERT_NO_FATAL_FAILURE(launch());
  press('a');
  expectAway({letter, note});
  const auto strip = desktop.content(pellow->strip());
  ASSERT_NO_FATAL_FAILURE(openMenu(strip.x + 2, strip.y + strip.height / 2, 3));
  choose(quit);
  EXPECT_EQ(pellow->process().exitStatus(), 0) << pellow->process().standardError();
  expectHome({letter, note});
}

// As a program that no longer runs left them, without a record.
TEST_F(MenuBar, FindsWindowsThatSomebodyElseLost) {
  if (minimizesInstead) GTEST_SKIP() << "no window leaves the screen here";
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(letter));
  ASSERT_NO_FATAL_FAILURE(putOffScreen(note));
  pellow->process().kill();
  std::filesystem::remove(PellowProgram::journalFile(desktop));
  ASSERT_NO_FATAL_FAILURE(launch());
  expectAway({letter, note});
  ASSERT_NO_FATAL_FAILURE(openStatusMenu());
  choose(bringBack);
  ASSERT_NO_FATAL_FAILURE(awaitAlert());
  EXPECT_EQ(pellow->timesLogged("default Rescued off-screen window from Testclient"), 1);
  answerAlert();
  for (const auto& guest : {letter, note}) {
    ASSERT_TRUE(desktop.activate(guest.window));
    EXPECT_TRUE(eventually([&] { return pixelsOf(guest, desktop.screen()) > 400 * 300 / 2; }))
        << story(guest);
  }
  expectAllIsOver();
}

}  // namespace
}  // namespace pellow::desktop
