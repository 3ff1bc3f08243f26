#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/unit/program.h"

// What the user does with a strip: its menus, its drags, its hiding and its previews. The display
// is 1440 × 900 with the Dock below and the menu bar above: 70 to 875 is visible.

namespace pellow {
namespace {

using Lines = std::vector<std::string>;

class StripStory : public Story {
 protected:
  // All of these windows are away, in this order.
  void launchWithTabs(const std::vector<std::string>& titles = {"Shopping", "Garden", "Travel"}) {
    launch();
    for (const auto& title : titles) putAway(title);
    mail.openWindow("Inbox", place);
    program->pressPellow();
    desktop.runUntilQuiet();
  }
  void expectStaysOutWhileATabComes(const std::string& title) {
    notes.openWindow(title, place);
    desktop.keyboard().press(17, Program::modifiers);
    for (int step = 0; step < 50; ++step) {
      desktop.run(0.01);
      EXPECT_EQ(frameNow().maxX(), 1434);
    }
    EXPECT_TRUE(strip().viewNamed(title));
  }
  void putAway(const std::string& title) {
    notes.openWindow(title, place);
    program->pressPellow();
  }
  // Zones at the right edge, from its top down, stored before the launch.
  void zonesNamed(const std::vector<std::string>& names) {
    std::vector<TabZone> zones;
    for (const auto& name : names)
      zones.push_back({.id = desktop.uuidSource().next(),
                       .name = name,
                       .position = {1, 0.3 + 0.5 * static_cast<double>(zones.size())},
                       .snap = StripEdge::right});
    desktop.userDefaults().put("zones", DefaultsData{nlohmann::json(zones).dump()});
  }
  void prefer(std::string_view key, DefaultsValue value) {
    desktop.userDefaults().put(key, std::move(value));
  }
  TabZone zone() {
    const auto stored = data(desktop.userDefaults(), "zones");
    return nlohmann::json::parse(stored.value()).get<std::vector<TabZone>>().at(0);
  }

  const simulated::Panel& strip(const std::string& zone = "Tabs") {
    for (const auto* const panel : desktop.panels().visible("pellow-strip"))
      if (panel->view("")->look.accessibleName == zone) return *panel;
    throw std::out_of_range("no zone " + zone);
  }
  AppKitRect frameNow() { return strip().frameNow(); }
  Lines tabs(const std::string& zone = "Tabs") {
    Lines names;
    for (const auto& tab : strip(zone).view("tabs")->children)
      names.push_back(tab->look.accessibleName);
    return names;
  }
  AppKitPoint tab(const std::string& title) { return program->tab(title); }
  // Between the tabs.
  AppKitPoint handle() {
    const auto frame = strip().frame();
    return {frame.minX() + 2, frame.midY()};
  }

  bool previews() { return !desktop.panels().visible("pellow-preview").empty(); }
  const simulated::Panel& preview() { return desktop.panels().panel("pellow-preview"); }
  std::string previewed() { return previews() ? preview().view("")->look.accessibleName : ""; }

  void moveTo(AppKitPoint point, Seconds wait = 0.01) {
    desktop.pointer().move(point);
    desktop.run(wait);
  }
  void openMenu(AppKitPoint at) {
    desktop.pointer().secondaryClick(at);
    desktop.run(0.01);
  }
  void choose(simulated::OpenMenu::Path path) {
    desktop.menu().choose(path);
    desktop.run(0.1);
  }
  void choose(AppKitPoint at, simulated::OpenMenu::Path path) {
    openMenu(at);
    choose(path);
  }

  const QuartzRect place{100, 100, 400, 300};
  const AppKitPoint elsewhere{300, 300};
  simulated::Application notes = desktop.launch("Notes", "com.example.notes");
  simulated::Application mail = desktop.launch("Mail", "com.example.mail");
};

TEST_F(StripStory, ATabHasAMenu) {
  zonesNamed({"Tabs", "Reading"});
  launchWithTabs();
  auto& menu = desktop.menu();
  openMenu(tab("Garden"));
  EXPECT_EQ(menu.lines(), (Lines{"Restore", "—", "Size ▸", "Always Pellow Notes Here",
                                 "Pellow All Notes Windows Here", "—", "Show Window Title", "—",
                                 "✓ Make This Zone the Default", "—", "Move to ▸"}));
  EXPECT_EQ(menu.item({"Always Pellow Notes Here"}).tooltip,
            "New windows from this app go to this zone. One zone per app, so pinning it somewhere "
            "else moves the pin.");
  EXPECT_EQ(menu.item({"Make This Zone the Default"}).tooltip,
            "Where windows go when nothing else decides.");
  EXPECT_EQ(menu.lines({"Size"}), (Lines{"✓ Default", "—", "24 pt", "32 pt", "40 pt", "48 pt",
                                         "56 pt", "64 pt", "72 pt"}));
  EXPECT_EQ(menu.lines({"Move to"}), (Lines{"✓ Tabs", "Reading"}));
  choose({"Size", "40 pt"});
  EXPECT_EQ(strip().viewNamed("Garden")->frame.size, (Size{40, 40}));
  openMenu(tab("Garden"));
  EXPECT_EQ(menu.lines({"Size"})[0], "Default");
  EXPECT_EQ(menu.lines({"Size"})[4], "✓ 40 pt");
  choose({"Size", "Default"});
  choose(tab("Garden"), {"Show Window Title"});
  EXPECT_NEAR(strip().viewNamed("Garden")->frame.width(), 5.3 * 34, 1e-9);
  choose(tab("Garden"), {"Show Window Title"});
  EXPECT_EQ(strip().viewNamed("Garden")->frame.width(), 34);

  choose(tab("Garden"), {"Move to", "Reading"});
  EXPECT_EQ(tabs("Reading"), Lines{"Garden"});
  choose(tab("Garden"), {"Make This Zone the Default"});
  openMenu(tab("Travel"));
  EXPECT_EQ(menu.lines()[8], "Make This Zone the Default");
  choose({"Restore"});
  desktop.runUntilQuiet();
  EXPECT_EQ(tabs(), (Lines{"Shopping", "Inbox"}));
  choose(tab("Shopping"), {"Pellow All Notes Windows Here"});
  desktop.runUntilQuiet();
  EXPECT_EQ(tabs(), (Lines{"Shopping", "Inbox", "Travel"}));
}

TEST_F(StripStory, PinningGathersAndUnpinningShows) {
  zonesNamed({"Tabs", "Reading"});
  launchWithTabs();
  const auto pins = [&] {
    return std::ranges::count(strip("Reading").view("tabs")->children, "pin",
                              [](const auto& tab) { return tab->children.back()->key; });
  };
  choose(tab("Garden"), {"Move to", "Reading"});
  choose(tab("Garden"), {"Always Pellow Notes Here"});
  EXPECT_EQ(tabs("Reading"), (Lines{"Shopping", "Garden", "Travel"}));
  EXPECT_EQ(tabs(), Lines{"Inbox"});
  EXPECT_EQ(pins(), 3);
  openMenu(tab("Garden"));
  EXPECT_EQ(desktop.menu().lines()[3], "✓ Always Pellow Notes Here");
  choose({"Always Pellow Notes Here"});
  EXPECT_EQ(pins(), 0);
  EXPECT_EQ(tabs("Reading"), (Lines{"Shopping", "Garden", "Travel"}));
}

TEST_F(StripStory, AZoneHasAMenu) {
  launchWithTabs();
  auto& menu = desktop.menu();
  openMenu(handle());
  EXPECT_EQ(menu.lines(),
            (Lines{"Tabs (disabled)", "—", "Colour ▸", "Icon Size ▸", "Show Zone Name"}));
  EXPECT_EQ(menu.lines({"Colour"}), (Lines{"✓ None", "—", "Red", "Orange", "Yellow", "Green",
                                           "Blue", "Purple", "Pink", "Grey", "—", "Custom…"}));
  choose({"Colour", "Green"});
  choose(handle(), {"Icon Size", "48 pt"});
  choose(handle(), {"Show Zone Name"});
  EXPECT_EQ(zone().colorHex, desktop.systemColours().resolve(SystemColour::green).text());
  EXPECT_EQ(zone().tabSize, 48);
  EXPECT_TRUE(zone().showsName);
  EXPECT_EQ(strip().frame().width(), 48 + 10 + 18);
  openMenu(handle());
  EXPECT_EQ(menu.lines({"Colour"})[5], "✓ Green");
  EXPECT_EQ(menu.lines({"Icon Size"})[5], "✓ 48 pt");
  EXPECT_EQ(menu.lines()[4], "✓ Show Zone Name");

  choose({"Colour", "Custom…"});
  EXPECT_EQ(desktop.colourPanel().colour(), *Colour::parse(*zone().colorHex));
  desktop.colourPanel().pick({1, 0.5, 0});
  desktop.run(0.1);
  EXPECT_EQ(zone().colorHex, "#FF7F00");
  choose(handle(), {"Colour", "None"});
  choose(handle(), {"Icon Size", "Default"});
  EXPECT_EQ(zone().colorHex, std::nullopt);
  EXPECT_EQ(zone().tabSize, std::nullopt);
  EXPECT_FALSE(strip().view("colour"));
}

TEST_F(StripStory, AStripHidesWhereTheUserWantsThat) {
  prefer("autoHideStrip", true);
  launchWithTabs();
  const auto height = strip().frame().height();
  const AppKitRect expanded(1440 - 6 - 44, strip().frame().minY(), 44, height);
  const AppKitPoint sliver{1432, expanded.midY()};
  EXPECT_EQ(frameNow().minX(), 1430);
  moveTo(sliver, 0.1);
  EXPECT_GT(frameNow().minX(), expanded.minX());
  EXPECT_LT(frameNow().minX(), 1430);
  desktop.run(0.08);
  EXPECT_EQ(frameNow(), expanded);
  moveTo(elsewhere, 0.34);
  moveTo({1420, expanded.midY()}, 1);
  EXPECT_EQ(frameNow(), expanded) << "the pointer came back in time";

  // A menu holds it, wherever the pointer goes.
  openMenu(handle());
  moveTo(elsewhere, 2);
  EXPECT_EQ(frameNow(), expanded);
  expectStaysOutWhileATabComes("Early");
  desktop.menu().close();
  desktop.run(0.34);
  EXPECT_EQ(frameNow().maxX(), 1434);
  desktop.run(0.2);
  EXPECT_EQ(frameNow().minX(), 1430);

  // At the very edge, the pointer is on the strip that is out and beside the one that is in.
  moveTo({1438, expanded.midY()});
  for (int second = 0; second < 10; ++second) {
    desktop.run(1);
    EXPECT_EQ(frameNow().maxX(), 1434);
  }
  expectStaysOutWhileATabComes("Late");
  moveTo({1438, 100}, 0.34);
  EXPECT_EQ(frameNow().maxX(), 1434);
  desktop.run(0.2);
  EXPECT_EQ(frameNow().minX(), 1430);

  choose(sliver, {"Show Zone Name"});
  moveTo(elsewhere, 1);
  EXPECT_EQ(frameNow().minX(), 1422) << "18 points with the name";
  prefer("autoHideStrip", false);
  program->perform(ShortcutAction::toggleFloatAbove);
  EXPECT_EQ(frameNow().maxX(), 1434);
  EXPECT_EQ(strip().level(), PanelLevel::desktopIcons);
}

TEST_F(StripStory, AFloatingStripDoesNotHide) {
  prefer("autoHideStrip", true);
  launchWithTabs();
  moveTo({1435, strip().frame().midY()}, 0.3);
  desktop.pointer().drag(handle(), {600, 400});
  desktop.runUntilQuiet();
  moveTo(elsewhere, 2);
  ASSERT_EQ(zone().snap, std::nullopt);
  EXPECT_EQ(frameNow().width(), 44);
  EXPECT_NEAR(frameNow().minX(), 598, 1e-9);
}

TEST_F(StripStory, ADragMovesTheZone) {
  desktop.screens().plug(7, {1440, 0, 1000, 900});
  launchWithTabs();
  const auto width = strip().frame().width();
  const auto dragTo = [&](AppKitPoint origin) {
    desktop.pointer().drag(handle(), handle() + (origin - strip().frame().origin));
    desktop.runUntilQuiet();
  };
  // 48 points from the edge it snaps, beyond it floats.
  dragTo({1440 - 48.5 - width, 300});
  EXPECT_EQ(zone().snap, std::nullopt);
  EXPECT_NEAR(strip().frame().minX(), 1440 - 48.5 - width, 1e-9);
  EXPECT_NEAR(strip().frame().minY(), 300, 1e-9);
  dragTo({1440 - 48 - width, 400});
  EXPECT_EQ(zone().snap, StripEdge::right);
  EXPECT_EQ(strip().frame().maxX(), 1434);
  EXPECT_NEAR(strip().frame().minY(), 400, 1e-9);
  EXPECT_EQ(zone().displayID, desktop.screens().all()[0].displayID);

  // To the display with the larger part.
  dragTo({1440 - width / 2 + 1, 300});
  EXPECT_EQ(zone().displayID, 7);
  EXPECT_EQ(zone().snap, StripEdge::left);
  EXPECT_EQ(strip().frame().minX(), 1446);
  desktop.screens().unplug(7);
  desktop.runUntilQuiet();
  EXPECT_EQ(strip().frame().minX(), 6);
  desktop.screens().plug(7, {1440, 0, 1000, 900});
  desktop.runUntilQuiet();
  EXPECT_EQ(strip().frame().minX(), 1446);

  dragTo({1800, 875 - strip().frame().height()});
  EXPECT_EQ(zone().snap, StripEdge::top);
  const auto atTheTop = strip().frame();
  EXPECT_GT(atTheTop.width(), atTheTop.height());
  dragTo({atTheTop.minX(), atTheTop.minY() + 5});
  EXPECT_EQ(strip().frame(), atTheTop) << "back at its place";

  // What begins on a tab is a click, however it wobbles.
  desktop.pointer().drag(tab("Travel"), tab("Travel") + AppKitVector{5, 5});
  desktop.runUntilQuiet();
  EXPECT_EQ(tabs(), (Lines{"Shopping", "Garden", "Inbox"}));
}

TEST_F(StripStory, ATabThatComesDisturbsNeitherDragNorSlide) {
  prefer("autoHideStrip", true);
  launchWithTabs();
  const auto comes = [&](const std::string& title, Seconds wait) {
    notes.openWindow(title, place);
    desktop.keyboard().press(17, Program::modifiers);
    desktop.run(wait);
  };
  moveTo({1432, strip().frame().midY()}, 0.001);
  comes("Late", 0.12);
  const auto onTheWay = frameNow();
  EXPECT_GT(onTheWay.minX(), 1390);
  EXPECT_LT(onTheWay.minX(), 1430);
  EXPECT_EQ(tabs().size(), 5);
  desktop.run(0.06);
  EXPECT_EQ(frameNow(), strip().frame());
  EXPECT_EQ(frameNow().minX(), 1390);

  const auto from = handle();
  desktop.pointer().press(from);
  const auto to = from + AppKitVector{-200, 0};
  moveTo(to, 0.05);
  EXPECT_EQ(strip().frame().minX(), 1190);
  comes("Later", 1);
  EXPECT_EQ(tabs().size(), 6);
  EXPECT_EQ(strip().frame().minX(), 1190);
  EXPECT_TRUE(strip().frame().contains(to));
  desktop.pointer().release();
  desktop.runUntilQuiet();
  EXPECT_EQ(zone().snap, std::nullopt);
  EXPECT_EQ(strip().frame().minX(), 1190);
}

TEST_F(StripStory, RestingOnATabShowsAPreview) {
  launchWithTabs();
  moveTo(tab("Garden"), 0.34);
  EXPECT_FALSE(previews());
  desktop.run(0.02);
  EXPECT_EQ(previewed(), "Garden");
  EXPECT_EQ(preview().frame().maxX(), tab("Garden").x - 17 - 10);
  moveTo(elsewhere, 0.24);
  EXPECT_TRUE(previews());
  moveTo({preview().frame().midX(), preview().frame().midY()}, 2);
  EXPECT_TRUE(previews()) << "the pointer rests on it";
  moveTo(elsewhere, 0.26);
  EXPECT_FALSE(previews());

  // From tab to tab one takes the place of the other.
  moveTo(tab("Shopping"), 0.4);
  moveTo(tab("Garden"), 0.34);
  EXPECT_EQ(previewed(), "Shopping");
  desktop.run(0.02);
  EXPECT_EQ(previewed(), "Garden");
  moveTo(tab("Travel"), 0.2);
  moveTo(tab("Garden"), 2);
  EXPECT_EQ(previewed(), "Garden");

  moveTo({preview().frame().midX(), preview().frame().midY()}, 1);
  choose({preview().frame().midX(), preview().frame().midY()}, {"Size", "48 pt"});
  EXPECT_EQ(previewed(), "Garden");
  EXPECT_EQ(preview().frame().maxX(), tab("Garden").x - 24 - 10) << "it follows its tab";
  desktop.pointer().click({preview().frame().midX(), preview().frame().midY()});
  desktop.runUntilQuiet();
  EXPECT_EQ(tabs(), (Lines{"Shopping", "Travel", "Inbox"}));
  EXPECT_FALSE(previews());

  moveTo(tab("Travel"), 1);
  openMenu(tab("Travel"));
  EXPECT_FALSE(previews());
  desktop.menu().close();
  prefer("previewOnHover", false);
  moveTo(elsewhere);
  moveTo(tab("Travel"), 1);
  EXPECT_FALSE(previews());
}

TEST_F(StripStory, APreviewLivesAsLongAsItsEntry) {
  launchWithTabs();
  const auto comesBack = [&](const std::string& title) {
    const auto& all = program->controller().store().tabs();
    program->controller().restore({std::ranges::find(all, title, &TabItem::title)->id});
    desktop.run(0.3);
  };
  moveTo(tab("Garden") + AppKitVector{0, -9}, 1);
  const auto before = preview().frame();
  comesBack("Inbox");
  EXPECT_EQ(previewed(), "Garden") << "the pointer is still on its tab";
  EXPECT_NE(preview().frame(), before);
  comesBack("Garden");
  EXPECT_FALSE(previews());
  desktop.run(1);
  EXPECT_FALSE(previews()) << "Shopping came beneath a pointer at rest";

  // Where applications are put away whole the entry outlives the view of its first tab.
  prefer("tabScope", "app");
  program->perform(ShortcutAction::toggleFloatAbove);
  moveTo(elsewhere, 1);
  moveTo(tab("Shopping"), 1);
  EXPECT_EQ(previewed(), "Shopping");
  comesBack("Shopping");
  EXPECT_EQ(previewed(), "Travel");
  desktop.run(2);
  EXPECT_EQ(previewed(), "Travel");
  moveTo(elsewhere, 1);
  EXPECT_FALSE(previews());
}

TEST_F(StripStory, APreviewHoldsTheStrip) {
  prefer("autoHideStrip", true);
  launchWithTabs();
  moveTo({1432, strip().frame().midY()}, 0.3);
  moveTo(tab("Garden"), 1);
  ASSERT_TRUE(previews());
  moveTo({preview().frame().midX(), preview().frame().midY()}, 2);
  EXPECT_EQ(frameNow().maxX(), 1434);
  putAway("Late");
  EXPECT_EQ(frameNow().maxX(), 1434);
  EXPECT_TRUE(previews());
  moveTo(elsewhere, 1);
  EXPECT_FALSE(previews());
  EXPECT_EQ(frameNow().minX(), 1430);

  // Left for neither, the strip does not wait for it.
  moveTo({1432, strip().frame().midY()}, 0.3);
  moveTo(tab("Garden"), 1);
  ASSERT_TRUE(previews());
  moveTo(elsewhere, 0.34);
  EXPECT_FALSE(previews());
  EXPECT_EQ(frameNow().maxX(), 1434);
  desktop.run(0.2);
  EXPECT_EQ(frameNow().minX(), 1430);
}

}  // namespace
}  // namespace pellow
