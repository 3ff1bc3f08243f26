#pragma once

#include "tests/harness/everyday.h"

// What every window manager must let Pellow do: scripts/window-managers goes through all of them,
// and each story of WindowManagers is a column of its table.

namespace pellow::desktop {

class WindowManagers : public Everyday {
 protected:
  // Off the screen and back, by click and by key.
  void expectRoundTrips(const Guest& guest) {
    for (const bool byClick : {true, false}) {
      ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
      const auto away = desktop.frame(guest.window);
      EXPECT_EQ(std::pair(away.width, away.height), std::pair(guest.home.width, guest.home.height));
      ASSERT_NO_FATAL_FAILURE(bringBack(guest, byClick));
      expectAllIsOver();
    }
  }

  // A restore ends by giving the window the keys. A window off the screen may have kept them, so
  // another one takes them first: otherwise the next step could come too early.
  void bringBack(const Guest& guest, bool byClick) {
    const auto bystander = client.open("Bystander", {700, 500, 200, 100});
    ASSERT_TRUE(desktop.activate(bystander));
    byClick ? pellow->clickTab(0) : press('r');
    expectHome({guest});
    EXPECT_TRUE(becomesActive(guest));
    client.destroy(bystander);
  }

  // A window that cannot move in these states leaves them, and takes them up again.
  void expectRoundTrip(WindowID window, const std::vector<std::string>& states) {
    const auto hasAll = [&](bool has) {
      return std::ranges::all_of(
          states, [&](const auto& state) { return desktop.hasState(window, state) == has; });
    };
    const auto expanded = guestOf(window);
    ASSERT_TRUE(hasAll(true));
    ASSERT_NO_FATAL_FAILURE(putOffScreen(expanded));
    EXPECT_TRUE(hasAll(minimizesInstead));
    ASSERT_NO_FATAL_FAILURE(bringBack(expanded, true));
    EXPECT_TRUE(eventually([&] { return hasAll(true); }));
    expectAllIsOver();
  }

  // The last one is active, and each covers a part of the one before.
  std::vector<Guest> openFive() {
    std::vector<Guest> guests;
    for (int index = 0; index < 5; ++index)
      guests.push_back(open(client, "Guest " + std::to_string(index),
                            {100 + 40 * index, 100 + 40 * index, 400, 250}));
    return guests;
  }

  // The picture of the screen without the bars of the window manager, the strip and the sliver, or
  // what else there is of a frame within so many columns.
  std::vector<std::uint32_t> inSight(int sliver = 1) const {
    auto part = desktop.workArea();
    part.width = std::min(part.width, desktop.screen().width - sliver - part.x);
    auto picture = desktop.picture(part);
    const auto strip = desktop.content(pellow->strip());
    for (int y = 0; y < picture.height; ++y) {
      if (std::abs(part.y + y - strip.y - strip.height / 2) > 60) continue;
      const auto row = picture.pixels.begin() + std::ptrdiff_t(y) * picture.width;
      std::fill(row + std::max(0, strip.x - part.x), row + picture.width, 0);
    }
    return picture.pixels;
  }

  // The same once it stands still.
  std::vector<std::uint32_t> stillPicture(int sliver) const {
    std::vector<std::uint32_t> picture;
    EXPECT_TRUE(
        comesToRest([&] { return picture = inSight(sliver); }, std::chrono::milliseconds(400)));
    return picture;
  }
  // The same without any window; a compositor paints nothing before the first one comes.
  std::vector<std::uint32_t> bareDesktop(int sliver) {
    const auto next = open(client, "Next", {400, 300, 200, 100});
    expectHome({next});
    client.destroy(next.window);
    EXPECT_TRUE(eventually([&] { return isOutOfSight(next); }));
    return stillPicture(sliver);
  }

  // When the window manager shows another window, it has finished with those before.
  void awaitFinished() { client.destroy(client.open("Next", {400, 300, 200, 100})); }

  // The state is there, and the frame that comes with it.
  void awaitState(WindowID window, std::string_view state) {
    ASSERT_TRUE(eventually([&] { return desktop.hasState(window, state); }));
    awaitFinished();
    ASSERT_TRUE(desktop.activate(window));
    EXPECT_GE(desktop.frame(window).height, desktop.workArea().height);
  }

  TestClient client{desktop};
};

}  // namespace pellow::desktop
