#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/program.h"

// Strips follow the stores, the preferences and the displays.

namespace pellow {
namespace {

// The strips alone, with stores of their own.
class Strips : public testing::Test {
 protected:
  Strips() { strips.start(); }

  TabItem tab(const std::string& title, const std::string& bundleID) {
    const auto window = desktop.launch(bundleID, bundleID).openWindow(title, {0, 0, 300, 200});
    return {.id = desktop.uuidSource().next(),
            .window = {window.element(), window.pid()},
            .appName = bundleID,
            .bundleID = bundleID,
            .title = title};
  }
  void prefer(std::string_view key, DefaultsValue value) {
    desktop.userDefaults().put(key, std::move(value));
    notifications.post(Preferences::didChange);
  }
  // As they are shown now, and in the next frame of the display.
  const ViewNode& shownTabs() { return *desktop.panels().panel("pellow-strip").view("tabs"); }
  const ViewNode& tabs() {
    desktop.run(0.02);
    return shownTabs();
  }

  simulated::Desktop desktop;
  NotificationCenter notifications;
  Preferences preferences{desktop.userDefaults(), notifications};
  ZoneStore zones{desktop.userDefaults(), preferences, notifications, desktop.uuidSource()};
  TabStore store{notifications, desktop.workspace()};
  TabStripController strips{{store, zones, preferences, desktop.clock(), desktop.queues().main(),
                             desktop.screens(), desktop.panels(), desktop.eventMonitors(),
                             desktop.colourPanel(), desktop.systemColours(), notifications}};
};

TEST_F(Strips, TabsFollowTheStore) {
  const auto first = tab("First", "a");
  const auto second = tab("Second", "b");
  tabs();
  store.add(first);
  EXPECT_EQ(shownTabs().children.size(), 1) << "at once";
  store.add(second);
  EXPECT_EQ(shownTabs().children.size(), 1) << "not twice in one frame";
  ASSERT_EQ(tabs().children.size(), 2);
  EXPECT_EQ(tabs().children[0]->look.accessibleName, "First");
  EXPECT_GT(tabs().children[0]->frame.minY(), tabs().children[1]->frame.minY());
  EXPECT_EQ(tabs().children[0]->frame.size, (Size{34, 34}));

  // Where a tab is, and where the next one would be, told without looking at the panel.
  const auto panel = desktop.panels().panel("pellow-strip").frame();
  const auto shown = tabs().children[1]->frame;
  EXPECT_EQ(strips.frame(second.id),
            AppKitRect(panel.minX() + shown.minX(), panel.minY() + shown.minY(), 34, 34));
  const auto projected = strips.projectedTabFrame(zones.defaultZone().id);
  const auto third = tab("Third", "c");
  store.add(third);
  EXPECT_EQ(strips.frame(third.id), projected);
  EXPECT_EQ(strips.frames(std::array{first.id, desktop.uuidSource().next(), third.id}),
            (std::map{std::pair{first.id, *strips.frame(first.id)}, {third.id, *projected}}));
  EXPECT_EQ(strips.frame(desktop.uuidSource().next()), std::nullopt);
}

// Views are kept from one render to the next, but never what they showed or did for another tab.
TEST_F(Strips, AKeptViewIsAlwaysItsTabs) {
  std::vector<UUID> activated;
  strips.onActivate = [&](const auto& ids) { activated = ids; };
  auto first = tab("First", "a");
  const auto second = tab("Second", "b");
  const auto third = tab("Third", "c");
  for (const auto& each : {first, second, third}) store.add(each);
  tabs();
  store.remove(first);
  first.title = "Again";
  store.add(first);
  ASSERT_EQ(tabs().children.size(), 3);
  EXPECT_EQ(tabs().children[2]->look.accessibleName, "Again");
  for (const auto& [place, id] : {std::pair{0, second.id}, {1, third.id}, {2, first.id}}) {
    tabs().children[place]->actions.onClick();
    EXPECT_EQ(activated, std::vector{id});
  }
  zones.pins["b"] = zones.defaultZone().id;  // posts nothing
  strips.refresh();
  EXPECT_EQ(shownTabs().children[0]->children.back()->key, "pin");
  store.setSize(4000, std::vector{third.id});
  EXPECT_LT(tabs().children[0]->frame.width(), 34) << "it shrinks with the others";
  prefer("useThumbnails", true);
  store.remove(std::vector{first.id, second.id, third.id});
  prefer("thumbnailTabs", !preferences.pictureTabs());
  EXPECT_TRUE(tabs().children.empty());
}

TEST_F(Strips, SizesAndTitlesAreTheTabsOwnThenTheZonesThenThePreferences) {
  const auto own = tab("Own", "a");
  const auto plain = tab("Plain", "b");
  store.add(own);
  store.add(plain);
  prefer("tabSize", 500.0);
  EXPECT_EQ(tabs().children[0]->frame.width(), 72);
  auto zone = zones.defaultZone();
  zone.tabSize = 50;
  zone.showsName = true;
  zone.colorHex = "#FF0000";
  zones.update(zone);
  store.setSize(40, std::vector{own.id});
  store.setShowsTitle(true, std::vector{own.id});
  EXPECT_NEAR(tabs().children[0]->frame.width(), 5.3 * 40, 1e-9);
  EXPECT_EQ(tabs().children[1]->frame.size, (Size{50, 50}));

  const auto& panel = desktop.panels().panel("pellow-strip");
  EXPECT_EQ(panel.view("name")->look.rotation, 90);
  EXPECT_EQ(panel.view("name")->frame.midX(), 9);
  const auto* const fill = std::get_if<Fill>(&panel.view("colour")->look.content);
  ASSERT_TRUE(fill);
  EXPECT_EQ(fill->paint, Paint(Colour(1, 0, 0, 0.45)));
  EXPECT_EQ(panel.frame().width(), 5.3 * 40 + 10 + 18);
}

TEST_F(Strips, TabsOfOneApplicationShareAnEntryWhereApplicationsArePellowedWhole) {
  for (const auto* title : {"One", "Two", "Three"}) {
    auto item = tab(title, title == std::string("Two") ? "b" : "a");
    if (title == std::string("Three")) item.size = 60;
    store.add(item);
  }
  zones.pins["a"] = zones.defaultZone().id;
  zones.pins["b"] = desktop.uuidSource().next();  // a zone that is gone
  for (const auto& [key, value] : {std::pair{"mechanism", "hideApp"}, {"tabScope", "app"}}) {
    prefer(key, value);
    const auto entries = strips.entries(zones.defaultZone().id);
    ASSERT_EQ(entries.size(), 2) << key;
    EXPECT_EQ(entries[0].count, 2);
    EXPECT_EQ(entries[0].tooltip, "One\nThree");
    EXPECT_EQ(entries[0].tabIDs, (std::vector{store.tabs()[0].id, store.tabs()[2].id}));
    EXPECT_EQ(entries[0].size, 60);
    EXPECT_TRUE(entries[0].hasOwnSize);
    EXPECT_TRUE(entries[0].isPinned);
    EXPECT_FALSE(entries[1].isPinned);
    EXPECT_EQ(strips.frame(store.tabs()[0].id), strips.frame(store.tabs()[2].id));
    const auto& view = *tabs().children[0];
    EXPECT_EQ(std::get<Label>(view.children.back()->children[0]->look.content).text, "2");
    prefer(key, key == std::string("mechanism") ? "offscreen" : "window");
    EXPECT_EQ(strips.entries(zones.defaultZone().id).size(), 3);
  }
}

TEST_F(Strips, AGroupKeepsItsOwnTitleSettingWhenAnotherWindowComes) {
  prefer("tabScope", "app");
  const auto showsTitle = [&] { return strips.entries(zones.defaultZone().id)[0].showsTitle; };
  for (const bool preferred : {true, false}) {
    prefer("showTitles", preferred);
    const auto first = tab("First", "a");
    store.add(first);
    EXPECT_EQ(showsTitle(), preferred);
    store.setShowsTitle(!preferred, {{first.id}});
    store.add(tab("Second", "a"));
    EXPECT_EQ(showsTitle(), !preferred);
    store.remove(first);
    EXPECT_EQ(showsTitle(), preferred) << "gone with the tab that was told";
    store.remove(store.tabs().front());
  }
}

TEST_F(Strips, AZoneMayGoWhileItsStripIsDragged) {
  int drops = 0;
  strips.onMove = [&](auto&&...) { ++drops; };
  const auto drag = [&](bool goesFirst) {
    const auto zone = zones.add("Second");
    desktop.runUntilQuiet();
    const auto strip = desktop.panels().visible("pellow-strip").at(0)->frame();
    desktop.pointer().press({strip.minX() + 2, strip.midY()});
    desktop.pointer().move({600, 400});
    desktop.run(0.01);
    if (goesFirst) zones.remove(zone.id);
    desktop.pointer().release();
    desktop.runUntilQuiet();
    zones.remove(zone.id);
  };
  drag(false);
  EXPECT_EQ(drops, 1);
  drag(true);
  EXPECT_EQ(drops, 1);
}

TEST_F(Strips, ZonesHavePanelsOnTheirDisplays) {
  auto second = zones.add("Second");
  ASSERT_EQ(desktop.panels().visible("pellow-strip").size(), 2);
  desktop.screens().plug(7, {1440, 0, 1920, 1080});
  second.displayID = 7;
  zones.update(second);
  desktop.runUntilQuiet();
  const auto onSecondDisplay = [&] {
    int count = 0;
    for (const auto* panel : desktop.panels().visible("pellow-strip"))
      count += panel->frame().minX() > 1440;
    return count;
  };
  EXPECT_EQ(onSecondDisplay(), 1);

  prefer("tabsOnAllScreens", true);
  EXPECT_EQ(desktop.panels().visible("pellow-strip").size(), 4);
  EXPECT_EQ(onSecondDisplay(), 2);
  prefer("tabsOnAllScreens", false);
  EXPECT_EQ(desktop.panels().visible("pellow-strip").size(), 2);

  // A tab outlives its zone, in the default one.
  auto orphan = tab("Orphan", "a");
  orphan.zoneID = second.id;
  store.add(orphan);
  zones.remove(second.id);
  EXPECT_EQ(desktop.panels().visible("pellow-strip").size(), 1);
  EXPECT_EQ(tabs().children.size(), 1);

  // The panel stays where it is, and up to date, when another display becomes the main one.
  const auto latest = tab("Latest", "b");
  desktop.launch("Notes").openWindow("Shopping", {1500, 100, 800, 600});
  ASSERT_EQ(desktop.screens().main()->displayID, 7);
  const auto projected = strips.projectedTabFrame(zones.defaultZone().id);
  store.add(latest);
  EXPECT_EQ(tabs().children.size(), 2);
  EXPECT_EQ(onSecondDisplay(), 0);
  EXPECT_EQ(strips.frame(latest.id), projected);
  EXPECT_LT(projected->maxX(), 1440);
}

}  // namespace
}  // namespace pellow
