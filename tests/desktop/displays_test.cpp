#include <fstream>

#include "tests/harness/everyday.h"
#include "tests/harness/monitors.h"

// Several monitors, beside and above each other, that come and go while windows are away.

namespace pellow::desktop {
namespace {

PixelRect intersection(const PixelRect& a, const PixelRect& b) {
  const int x = std::max(a.x, b.x);
  const int y = std::max(a.y, b.y);
  return {x, y, std::max(std::min(a.x + a.width, b.x + b.width) - x, 0),
          std::max(std::min(a.y + a.height, b.y + b.height) - y, 0)};
}

class Displays : public Everyday {
 protected:
  // Restarts the window manager, so that it knows them.
  void plugAll(const std::map<std::string, PixelRect>& all, const std::string& primaryName) {
    for (const auto& [name, place] : all) plug(name, place, name == primaryName);
    desktop.restartWindowManager();
  }

  void plug(const std::string& name, PixelRect place, bool isPrimary = false) {
    plugged[name] = place;
    monitors.plug(name, place, isPrimary);
  }

  void unplug(const std::string& name) {
    plugged.erase(name);
    monitors.unplug(name);
  }

  // By the key, to this place, where no monitor may show more of it than a sliver.
  void putAway(const Guest& guest, int x, int y) {
    const PixelRect parked{x, y, guest.home.width, guest.home.height};
    ASSERT_TRUE(desktop.activate(guest.window));
    press('t');
    ASSERT_TRUE(eventually([&] { return desktop.frame(guest.window) == parked; }))
        << desktop.frame(guest.window) << " is not " << parked << "\n"
        << pellow->process().standardError();
    for (const auto& [name, monitor] : plugged) {
      const auto seen = intersection(parked, monitor);
      EXPECT_TRUE(seen.width <= sliver || seen.height == 0) << name << " shows " << seen;
    }
    EXPECT_TRUE(isOffMonitors(guest));
    // Who turns to a window at this very moment may lose to the one that gets the keyboard.
    EXPECT_TRUE(eventually([&] { return desktop.activeWindow() != guest.window; }));
  }
  bool isOffMonitors(const Guest& guest) const {
    return std::ranges::none_of(plugged, [&](const auto& each) {
      auto inside = each.second;
      inside.x += sliver;
      inside.width -= 2 * sliver;
      return pixelsOf(guest, inside) > 0;
    });
  }

  // There are strips at these places and nowhere else.
  void expectStrips(const std::vector<PixelRect>& places) {
    EXPECT_TRUE(eventually([&] { return std::ranges::is_permutation(strips(), places); }))
        << testing::PrintToString(strips()) << " are not " << testing::PrintToString(places);
  }

  std::vector<PixelRect> strips() const {
    std::vector<PixelRect> found;
    for (const auto strip : desktop.shownWindows("pellow", "pellow-strip"))
      found.push_back(desktop.content(strip));
    return found;
  }

  int sliver = 1;
  Monitors monitors{desktop.display()};
  std::map<std::string, PixelRect> plugged;
  TestClient client{desktop};
};

// The X screen shrinks to the monitor that is left, and grows again.
TEST_F(Displays, AMonitorGoesAndComesWhileItsWindowsAreAway) {
  const PixelRect left{0, 100, 600, 700};
  const PixelRect right{600, 0, 680, 800};
  plugAll({{"left", left}, {"right", right}}, "right");
  auto letter = open(client, "Letter", {40, 180, 420, 300});
  const auto sums = open(client, "Sums", {91, 433, 333, 251});
  const auto note = open(client, "Note", {700, 90, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch({{"tabsOnAllScreens", true}}));
  for (const auto& guest : {letter, sums, note}) ASSERT_NO_FATAL_FAILURE(putAway(guest, 1279, 772));
  const PixelRect leftStrip{600 - 50, 450 - 60, 44, 120};
  const PixelRect rightStrip{1280 - 50, 400 - 60, 44, 120};
  expectStrips({leftStrip, rightStrip});

  unplug("left");
  plug("right", {0, 0, 680, 800}, true);
  monitors.resizeScreen(680, 800);
  expectStrips({{680 - 50, 400 - 60, 44, 120}});
  // Nobody sees them, wherever openbox keeps what is beyond the X screen.
  for (const auto& guest : {letter, sums, note}) EXPECT_GE(desktop.frame(guest.window).x, 679);
  pellow->clickTab(0);
  letter.home = {0, 180, letter.home.width, letter.home.height};
  expectHome({letter});
  ASSERT_TRUE(hasTabs(2));

  monitors.resizeScreen(1280, 800);
  plug("right", right, true);
  plug("left", left);
  EXPECT_TRUE(eventually([&] { return strips().size() == 2; })) << testing::PrintToString(strips());
  press('r');
  expectHome({sums, note});
  expectAllIsOver();
}

TEST_F(Displays, AMonitorThatComesShowsNothingOfWindowsThatAreAway) {
  const PixelRect left{0, 0, 600, 800};
  const PixelRect right{600, 0, 680, 700};
  plugAll({{"left", left}}, "left");
  const std::vector guests{open(client, "Letter", {40, 180, 420, 300}),
                           open(client, "Note", {120, 90, 400, 300})};
  ASSERT_NO_FATAL_FAILURE(launch({{"tabsOnAllScreens", true}}));
  for (const auto& guest : guests) ASSERT_NO_FATAL_FAILURE(putAway(guest, 599, 772));
  const auto expectAt = [&](int x, int y) {
    for (const auto& guest : guests)
      EXPECT_TRUE(eventually([&] {
        const auto frame = desktop.frame(guest.window);
        return std::pair(frame.x, frame.y) == std::pair(x, y) && isOffMonitors(guest);
      })) << story(guest);
    EXPECT_TRUE(eventually([&] {
      return std::ranges::all_of(pellow->journal(), [&](const auto& record) {
        return record.at("parkedOrigin") == nlohmann::json{double(x), double(y)};
      });
    })) << pellow->journal();
  };
  plug("right", right);
  expectAt(1279, 672);
  // One that shows the same is no other place.
  plug("mirror", {600, 0, 640, 480});
  const PixelRect leftStrip{600 - 50, 400 - 41, 44, 82};
  const PixelRect rightStrip{1280 - 50, 350 - 41, 44, 82};
  expectStrips({leftStrip, rightStrip});
  unplug("right");
  expectAt(1239, 452);
  unplug("mirror");
  expectAt(599, 772);
  press('r');
  expectHome(guests);
  expectAllIsOver();
}

TEST_F(Displays, AWindowAndTheStripsAreExactAtTwoPixelsAPoint) {
  sliver = 2;
  const PixelRect left{0, 60, 602, 740};
  const PixelRect right{602, 0, 678, 800};
  plugAll({{"left", left}, {"right", right}}, "right");
  const auto letter = open(client, "Letter", {41, 181, 421, 301});
  const auto note = open(client, "Note", {701, 91, 403, 303});
  ASSERT_NO_FATAL_FAILURE(launch({{"tabsOnAllScreens", true}}, {{"QT_SCALE_FACTOR", "2"}}));
  expectStrips({{602 - 100, 430 - 60, 88, 120}, {1280 - 100, 400 - 60, 88, 120}});
  const auto hints = desktop.values(pellow->strip(), "WM_NORMAL_HINTS");
  EXPECT_EQ(std::pair(hints.at(15), hints.at(16)), std::pair(0u, 0u)) << "the base size";
  const PixelRect leftStrip{602 - 100, 430 - 44, 88, 88};
  const PixelRect rightStrip{1280 - 100, 400 - 44, 88, 88};
  for (const auto& [guest, other, strip] :
       {std::tuple{letter, note, leftStrip}, {note, letter, rightStrip}}) {
    ASSERT_NO_FATAL_FAILURE(putAway(guest, 1278, 744));
    expectStrips({leftStrip, rightStrip});
    ASSERT_TRUE(desktop.activate(other.window));
    desktop.click(strip.x + 44, strip.y + 44);
    expectHome({guest});
    EXPECT_TRUE(eventually([&] { return desktop.activeWindow() == guest.window; }));
  }
}

// A settings daemon announces the scale, as a user chooses it.
TEST_F(Displays, TheScaleChangesWhileAWindowIsAway) {
  const auto settings = desktop.configHome() / "settings";
  const auto announce = [&](int dotsPerInch) {
    std::ofstream(settings) << "Xft/DPI " << 1024 * dotsPerInch << "\n";
  };
  plugAll({{"only", {0, 0, 1280, 800}}}, "only");
  announce(96);
  const auto daemon = desktop.start({"xsettingsd", "-c", settings.string()});
  const auto guest = open(client, "Letter", {40, 180, 420, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putAway(guest, 1279, 772));
  expectStrips({{1280 - 50, 400 - 22, 44, 44}});

  announce(192);
  daemon->send(SIGHUP);
  const PixelRect strip{1280 - 100, 400 - 44, 88, 88};
  expectStrips({strip});
  EXPECT_TRUE(eventually([&] { return desktop.frame(guest.window).x == 1278; })) << story(guest);
  // Its corners are cut off, its sides are not, and the last pixels of the tab take the click.
  const auto corner = [&] { return desktop.picture({strip.x, strip.y, 1, 1}); };
  const auto side = [&] { return desktop.picture({strip.x, strip.y + 44, 1, 1}); };
  const auto outside = [&] { return desktop.picture({strip.x - 1, strip.y, 1, 1}); };
  EXPECT_TRUE(eventually([&] {
    return corner().pixels == outside().pixels && side().pixels != outside().pixels;
  })) << story(guest);
  desktop.click(strip.x + 72, strip.y + 72);
  EXPECT_TRUE(eventually([&] { return pellow->journal().empty(); }));
  EXPECT_TRUE(eventually([&] { return isSeenAt(desktop.frame(guest.window), guest); }));
}

}  // namespace
}  // namespace pellow::desktop
