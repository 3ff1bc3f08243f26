#include <array>
#include <cmath>
#include <thread>

#include "tests/harness/everyday.h"

// The pointer rests on real minimize buttons. `Palette` is a column of the table of
// scripts/window-managers.

namespace pellow::desktop {
namespace {

constexpr PixelRect place{300, 200, 600, 300};

// Those of GNOME have no minimize button unless the user asks for one.
Manager managerWithMinimizeButtons() {
  auto manager = chosenManager();
  manager.command = withSettings(manager.command, ".config/glib-2.0/settings/keyfile",
                                 "[org/gnome/desktop/wm/preferences]\n"
                                 "button-layout='appmenu:minimize,maximize,close'");
  return manager;
}

class PaletteTest : public Everyday {
 protected:
  PaletteTest() : Everyday({.windowManager = managerWithMinimizeButtons()}) {}

  void launchProgram(const Environment& changes = {}) {
    Environment environment{{"GSETTINGS_BACKEND", "keyfile"}};
    environment.insert(changes.begin(), changes.end());
    launch({{"animateFlight", false}}, environment);
  }

  std::vector<WindowID> palettes() const {
    return desktop.shownWindows("pellow", "pellow-palette");
  }
  bool isShown() const { return !palettes().empty(); }
  bool shows(bool expected) const {
    return eventually([&] { return isShown() == expected; });
  }
  PixelRect palette() const { return isShown() ? desktop.content(palettes()[0]) : PixelRect(); }

  PixelRect titleBar(WindowID window) const {
    const auto content = desktop.content(window);
    const auto top = desktop.frame(window).y;
    return {content.x, top, content.width, content.y - top};
  }
  static int middle(int from, int length) { return from + length / 2; }

  // Rests the pointer all along a title bar from its right until the palette comes, longer in every
  // round.
  bool findButton(PixelRect bar, int rounds = 4) {
    for (int round = 0; round < rounds; ++round)
      for (int x = bar.x + bar.width - 3; x > bar.x; x -= 6) {
        desktop.movePointer(x, middle(bar.y, bar.height));
        const auto rest = std::chrono::milliseconds(400 << round);
        const auto end = std::chrono::steady_clock::now() + rest;
        while (std::chrono::steady_clock::now() < end) {
          if (isShown()) return true;
          std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
      }
    return false;
  }
  void moveBack() { desktop.movePointer(desktop.screen().width / 2, desktop.screen().height - 30); }

  // How far the pixels are apart.
  static int distance(std::uint32_t one, std::uint32_t other) {
    int most = 0;
    for (const int shift : {0, 8, 16})
      most = std::max(most, std::abs(int(one >> shift & 255) - int(other >> shift & 255)));
    return most;
  }
  // As people see it: its backdrop, symbols and text in three rows, of which one is highlighted,
  // and a separator.
  bool looksRight(int highlighted) const {
    const auto picture = desktop.picture(palette());
    if (picture.width != 268 || picture.height != 97) return false;
    const auto backdrop = picture.at(3, 45);
    const auto strayed = [&](int x, int y, int width, int height, int far, std::uint32_t from) {
      int count = 0;
      for (int row = y; row < y + height; ++row)
        for (int column = x; column < x + width; ++column)
          count += distance(picture.at(column, row), from) > far;
      return count;
    };
    bool isRight = strayed(20, 61, 100, 1, 8, backdrop) == 100;
    for (const int row : {0, 1, 2}) {
      const int top = std::array{5, 31, 66}[row];
      const auto ground = picture.at(9, top + 13);
      isRight = isRight && (distance(ground, backdrop) > 4) == (row == highlighted) &&
                strayed(13, top + 5, 14, 16, 60, ground) > 15 &&
                strayed(33, top + 5, 100, 16, 90, ground) > 60;
    }
    return isRight;
  }
  void expectLooks(int highlighted) {
    EXPECT_TRUE(eventually([&] { return looksRight(highlighted); })) << highlighted;
  }

  TestClient client{desktop};
};

TEST_F(PaletteTest, Palette) {
  const auto guest = open(client, "Guest", place);
  ASSERT_NO_FATAL_FAILURE(launchProgram());
  const auto bar = titleBar(guest.window);
  if (chosenManagerName().starts_with("i3")) {
    noteOnce("i3 has no buttons.");
    EXPECT_FALSE(findButton(bar, 1));
    return;
  }
  ASSERT_TRUE(findButton(bar));
  expectLooks(-1);
  keepPicture();
  const auto window = palettes().at(0);
  const auto shown = palette();
  for (const auto* state : {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"})
    EXPECT_TRUE(desktop.hasState(window, state));

  // Onto it, from row to row, and off.
  for (int row = 0; row < 2; ++row) {
    desktop.movePointer(shown.x + 100, shown.y + 18 + 26 * row);
    expectLooks(row);
  }
  EXPECT_EQ(palette(), shown);
  keepPicture();
  EXPECT_EQ(desktop.activeWindow(), guest.window);
  EXPECT_TRUE(desktop.hasKeyboard(guest.window));
  moveBack();
  EXPECT_TRUE(shows(false));

  // Centred below the button that minimizes: as far left of its middle as right, and where it ends
  // four points above.
  std::vector<std::pair<int, int>> spots{{-5, middle(bar.y, bar.height)},
                                         {5, middle(bar.y, bar.height)}};
  if (chosenManagerName() == "openbox") spots.emplace_back(0, shown.y - 5);
  EXPECT_LE(shown.y, bar.y + bar.height + 5);
  for (const auto& [dx, y] : spots) {
    desktop.click(shown.x + 134 + dx, y);
    EXPECT_TRUE(hasTabs(1)) << dx << " " << y;
    EXPECT_TRUE(eventually([&] { return isOutOfSight(guest); }));
    moveBack();
    pellow->clickTab(0);
    expectHome({guest});
    EXPECT_TRUE(becomesActive(guest));
  }

  ASSERT_TRUE(findButton(bar));
  desktop.click(shown.x + 100, shown.y + 18);
  EXPECT_TRUE(shows(false));
  EXPECT_TRUE(hasTabs(1));
  EXPECT_TRUE(eventually([&] { return isAway(guest); })) << story(guest);
  pellow->clickTab(0);
  expectHome({guest});
  expectAllIsOver();
}

TEST_F(PaletteTest, APressElsewhereHidesItButNotTheWheel) {
  const auto guest = open(client, "Guest", place);
  open(client, "Beside", {930, 100, 200, 400});
  ASSERT_NO_FATAL_FAILURE(launchProgram());
  ASSERT_TRUE(findButton(titleBar(guest.window)));
  const auto middleX = palette().x + 134;
  // Beside the button, where nothing but the press hides it.
  const auto toGap = [&] { desktop.movePointer(middleX + 120, palette().y - 2); };
  const auto toButton = [&](int dx) {
    moveBack();
    EXPECT_TRUE(shows(false));
    desktop.movePointer(middleX + dx,
                        middle(titleBar(guest.window).y, titleBar(guest.window).height));
    ASSERT_TRUE(shows(true));
  };
  for (const std::uint8_t button : std::array<std::uint8_t, 3>{2, 3, 1}) {
    ASSERT_NO_FATAL_FAILURE(toButton(3 * button - 6));
    toGap();
    for (const std::uint8_t wheel : std::array<std::uint8_t, 4>{4, 5, 6, 7}) {
      desktop.press(wheel);
      desktop.release(wheel);
    }
    ASSERT_TRUE(desktop.answersPing(pellow->strip()));
    EXPECT_FALSE(eventually([&] { return !isShown(); }, std::chrono::seconds(1)));
    desktop.press(button);
    EXPECT_TRUE(shows(false)) << int(button);
    desktop.release(button);
  }
}

// One that hangs, also on the accessibility bus, delays nothing but itself.
TEST_F(PaletteTest, AnApplicationThatDoesNotAnswerDelaysNoOther) {
  const auto bus = desktop.startSessionBus();
  const auto hitori = desktop.start({"/usr/games/hitori"},
                                    {{"GSETTINGS_BACKEND", "memory"}, {"NO_AT_BRIDGE", "0"}});
  ASSERT_TRUE(eventually([&] { return !desktop.clients().empty(); }));
  const auto silent = desktop.clients().front();
  ASSERT_TRUE(desktop.activate(silent));
  const auto header = desktop.frame(silent);
  TestClient mute(desktop, "Mute");
  const auto frozen = open(mute, "Frozen", {40, 560, 200, 100});
  const auto away = open(client, "Away", {900, 500, 200, 100});
  const auto guest = open(client, "Guest", place);
  ASSERT_NO_FATAL_FAILURE(launchProgram());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(away));
  ASSERT_TRUE(desktop.activate(guest.window));
  const auto silentPid = static_cast<pid_t>(desktop.values(silent, "_NET_WM_PID").at(0));
  ASSERT_EQ(kill(silentPid, SIGSTOP), 0);
  mute.process().send(SIGSTOP);

  for (int x = header.x; x < header.x + header.width; x += 5) desktop.movePointer(x, header.y + 20);
  ASSERT_TRUE(findButton(titleBar(guest.window)));
  const auto middleX = palette().x + 134;
  desktop.movePointer(middleX, header.y + 20);
  EXPECT_TRUE(shows(false));
  pellow->clickTab(0);
  expectHome({away});
  // Its title bar belongs to the window manager.
  EXPECT_TRUE(findButton(titleBar(frozen.window)));
  EXPECT_TRUE(desktop.answersPing(pellow->strip()));
  mute.process().send(SIGCONT);
  kill(silentPid, SIGCONT);
}

}  // namespace
}  // namespace pellow::desktop
