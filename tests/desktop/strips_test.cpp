#include <fstream>

#include "tests/harness/everyday.h"
#include "tests/harness/monitors.h"

// Strips in the hands of a user with a real pointer.

namespace pellow::desktop {
namespace {

class Strips : public Everyday {
 protected:
  // The zone of a strip, as the user defaults hold it; "" floats.
  static nlohmann::json zone(const std::string& name, const std::string& edge, double x, double y) {
    nlohmann::json zone{{"id", "A0000000-0000-0000-0000-00000000000" + std::to_string(edge.size())},
                        {"name", name},
                        {"position", {x, y}},
                        {"showsName", false}};
    if (!edge.empty()) zone["snap"] = edge;
    return zone;
  }
  static nlohmann::json stored(const nlohmann::json& zones) { return {{"data", zones.dump()}}; }
  nlohmann::json storedZone() const {
    const auto file = PellowProgram::defaultsFile(desktop);
    const auto defaults = nlohmann::json::parse(std::ifstream(file), nullptr, false);
    if (!defaults.is_object() || !defaults.contains("zones")) return {};
    return nlohmann::json::parse(defaults["zones"]["data"].get<std::string>()).at(0);
  }

  PixelRect strip() const { return desktop.content(pellow->strip()); }
  bool stripComesTo(PixelRect place) const {
    return eventually([&] { return strip() == place; });
  }
  // Between the tabs.
  void dragStripBy(int dx, int dy) {
    const auto from = strip();
    desktop.movePointer(from.x + 2, from.y + from.height / 2);
    desktop.press();
    for (int step = 1; step <= 20; ++step)
      desktop.movePointer(from.x + 2 + dx * step / 20, from.y + from.height / 2 + dy * step / 20);
    EXPECT_TRUE(stripComesTo({from.x + dx, from.y + dy, from.width, from.height})) << strip();
    desktop.release();
  }
  PixelRect openMenu(PixelRect at) {
    desktop.click(at.x + at.width / 2, at.y + at.height / 2, 3);
    std::vector<WindowID> menus;
    EXPECT_TRUE(eventually(
        [&] { return !(menus = desktop.shownWindows("pellow", "pellow-menu")).empty(); }));
    return menus.empty() ? PixelRect() : desktop.content(menus.front());
  }

  TestClient client{desktop};
};

TEST_F(Strips, StandOnEveryEdgeOfEveryDisplay) {
  Monitors monitors{desktop.display()};
  monitors.plug("left", {0, 0, 700, 800}, true);
  monitors.plug("right", {700, 0, 580, 600}, false);
  desktop.restartWindowManager();
  const nlohmann::json zones{zone("Left", "left", 0, 0.5), zone("Top", "top", 0.5, 0),
                             zone("Right", "right", 1, 0.5), zone("Bottom", "bottom", 0.5, 1),
                             zone("Floating", "", 0.5, 0.5)};
  ASSERT_NO_FATAL_FAILURE(launch({{"zones", stored(zones)}, {"tabsOnAllScreens", true}}));
  std::vector<PixelRect> expected;
  for (const PixelRect each : {PixelRect{0, 0, 700, 800}, PixelRect{700, 0, 580, 600}}) {
    const int middle = each.y + each.height / 2 - 30;
    expected.push_back({each.x + 6, middle, 44, 60});
    expected.push_back({each.x + each.width - 50, middle, 44, 60});
    expected.push_back({each.x + each.width / 2 - 30, each.y + 6, 60, 10});
    expected.push_back({each.x + each.width / 2 - 30, each.y + each.height - 16, 60, 10});
    expected.push_back({each.x + each.width / 2 - 22, middle, 44, 60});
  }
  const auto places = [&] {
    std::vector<PixelRect> found;
    for (const auto window : desktop.shownWindows("pellow", "pellow-strip"))
      found.push_back(desktop.content(window));
    return found;
  };
  EXPECT_TRUE(eventually([&] { return std::ranges::is_permutation(places(), expected); }))
      << testing::PrintToString(places());
}

TEST_F(Strips, ADragMovesTheZoneAndNeverTheFocus) {
  const auto guest = open(client, "Guest", {300, 200, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  const auto other = client.open("Other", {300, 200, 400, 300});
  ASSERT_NO_FATAL_FAILURE(dragStripBy(-600, 100));
  EXPECT_TRUE(
      eventually([&] { return storedZone().is_object() && !storedZone().contains("snap"); }));
  ASSERT_NO_FATAL_FAILURE(dragStripBy(-600, 0));
  EXPECT_TRUE(eventually([&] { return storedZone().value("snap", "") == "left"; }));
  EXPECT_TRUE(eventually([&] { return strip().x == 6; })) << strip();
  EXPECT_EQ(desktop.activeWindow(), other);
  EXPECT_TRUE(desktop.hasKeyboard(other));
  // It is still a strip: the tab answers, and a press on it that wobbles is a click.
  const auto place = strip();
  desktop.movePointer(place.x + 20, place.y + 20);
  desktop.press();
  desktop.movePointer(place.x + 25, place.y + 24);
  desktop.release();
  EXPECT_TRUE(hasTabs(0));
  expectHome({guest});
}

TEST_F(Strips, AMenuIsChosenFromByAClick) {
  const auto guest = open(client, "Guest", {300, 200, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch({{"autoHideStrip", true}}));
  ASSERT_NO_FATAL_FAILURE(putOffScreen(guest));
  const auto screen = desktop.screen();
  EXPECT_TRUE(eventually([&] { return strip().x == screen.width - 10; })) << strip();
  desktop.movePointer(screen.width - 3, strip().y + 22);
  EXPECT_TRUE(eventually([&] { return strip().x == screen.width - 50; })) << strip();
  const auto menu = openMenu(strip());
  // It holds the strip, wherever the pointer goes.
  desktop.movePointer(menu.x + 30, menu.y + menu.height - 8);
  desktop.movePointer(100, 700);
  EXPECT_FALSE(eventually([&] { return strip().x != screen.width - 50; }, std::chrono::seconds(1)));
  // The first item: "Restore".
  desktop.click(menu.x + 30, menu.y + 14);
  expectHome({guest});
  expectAllIsOver();
  EXPECT_TRUE(eventually([&] { return strip().x == screen.width - 10; })) << strip();
}

TEST_F(Strips, APictureIsPreviewedBesideItsTab) {
  const auto guest = open(client, "Guest", {300, 200, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch({{"useThumbnails", true}, {"animateFlight", false}}));
  ASSERT_NO_FATAL_FAILURE(desktop.activate(guest.window));
  press('t');
  // The tab shows the picture: the colour of the window is in sight, on the strip alone.
  EXPECT_TRUE(eventually([&] { return pellow->picture().count(*guest.colour) > 200; }));
  const auto tab = strip();
  desktop.movePointer(tab.x + tab.width / 2, tab.y + tab.height / 2);
  std::vector<WindowID> previews;
  ASSERT_TRUE(eventually(
      [&] { return !(previews = desktop.shownWindows("pellow", "pellow-preview")).empty(); }));
  const auto preview = desktop.content(previews.front());
  EXPECT_EQ(preview.width, 320);
  EXPECT_EQ(preview.x + preview.width, tab.x + 5 - 10) << "beside the tab";
  EXPECT_TRUE(eventually([&] { return desktop.picture(preview).count(*guest.colour) > 40000; }));
  desktop.movePointer(preview.x + 100, preview.y + 100);
  EXPECT_FALSE(eventually([&] { return desktop.shownWindows("pellow", "pellow-preview").empty(); },
                          std::chrono::seconds(1)));
  desktop.click(preview.x + 100, preview.y + 100);
  expectHome({guest});
  EXPECT_TRUE(eventually([&] { return desktop.shownWindows("pellow", "pellow-preview").empty(); }));
}

}  // namespace
}  // namespace pellow::desktop
