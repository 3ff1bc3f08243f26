#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/json.h"
#include "model/zone_store.h"
#include "platforms/simulated/desktop.h"

namespace pellow {
namespace {

constexpr auto someID = "6BA7B810-9DAD-11D1-80B4-00C04FD430C8";

class ZoneStoreTest : public testing::Test {
 protected:
  // As after a relaunch.
  ZoneStore stored() { return {defaults, preferences, notifications, desktop.uuidSource()}; }
  ZoneStore storedFrom(const std::string& zones) {
    defaults.set("zones", DefaultsData{zones});
    return stored();
  }
  int noticed() { return std::exchange(notices, 0); }

  simulated::Desktop desktop;
  UserDefaults& defaults = desktop.userDefaults();
  NotificationCenter notifications;
  Preferences preferences{defaults, notifications};
  int notices = 0;
  Subscription counting = notifications.observe("pellow.zonesDidChange", [this] { ++notices; });
};

// A list with one zone that has these members besides its id and its name.
std::string zoneWith(const std::string& members) {
  return std::string("[{\"id\": \"") + someID + "\", \"name\": \"Work\"" + members + "}]";
}

TEST_F(ZoneStoreTest, AFreshInstallHasOneZoneAtTheEarlierEdge) {
  const std::vector<std::pair<const char*, TabZone>> cases{
      {"left", {.position = {0, 0.5}, .snap = StripEdge::left}},
      {"right", {.position = {1, 0.5}, .snap = StripEdge::right}},
      {"top", {.position = {0, 0.5}, .snap = StripEdge::top}},
      {"diagonal", {.position = {1, 0.5}, .snap = StripEdge::right}}};
  for (auto [edge, expected] : cases) {
    defaults.set("edge", edge);
    const auto store = storedFrom("");
    ASSERT_EQ(store.zones().size(), 1u);
    expected.id = store.zones()[0].id;
    expected.name = "Tabs";
    EXPECT_EQ(store.zones()[0], expected) << edge;
    EXPECT_EQ(stored().zones(), store.zones()) << "persisted at once";
  }
  EXPECT_EQ(noticed(), 0);
}

TEST_F(ZoneStoreTest, StoresWhatAZoneHasAndLeavesOutWhatItHasNot) {
  const TabZone bare{.id = *UUID::parse(someID), .name = "Work", .position = {0.25, 1}};
  EXPECT_EQ(nlohmann::json(bare),
            nlohmann::json::parse(zoneWith(R"(, "position": [0.25, 1.0], "showsName": false)"))[0]);

  TabZone full = bare;
  full.showsName = true;
  full.colorHex = "#1A2B3C";
  full.tabSize = 40.5;
  full.displayID = 4'294'967'295;
  full.snap = StripEdge::bottom;
  EXPECT_EQ(nlohmann::json(full),
            nlohmann::json::parse(zoneWith(
                R"(, "position": [0.25, 1.0], "snap": "bottom", "showsName": true,
                   "colorHex": "#1A2B3C", "tabSize": 40.5, "displayID": 4294967295)"))[0]);
  for (const auto& zone : {bare, full}) EXPECT_EQ(nlohmann::json(zone).get<TabZone>(), zone);
}

TEST_F(ZoneStoreTest, ReadsTheLayoutOfTheEarlierVersion) {
  struct Case {
    const char* members;
    StripEdge snap;
    ZonePosition position;
  };
  for (const auto& [members, snap, position] : std::vector<Case>{
           {R"(, "edge": "bottom", "alignment": "top")", StripEdge::bottom, {0, 0}},
           {R"(, "edge": "right", "alignment": "bottom")", StripEdge::right, {1, 1}},
           {R"(, "edge": "left", "alignment": "middle")", StripEdge::left, {0, 0.5}},
           {R"(, "edge": "askew")", StripEdge::right, {1, 0.5}},
           {R"(, "edge": 5, "alignment": false, "position": null)", StripEdge::right, {1, 0.5}},
           {"", StripEdge::right, {1, 0.5}}}) {
    const auto zone = storedFrom(zoneWith(members)).defaultZone();
    EXPECT_EQ(zone.name, "Work") << members;
    EXPECT_EQ(zone.snap, snap) << members;
    EXPECT_EQ(zone.position, position) << members;
  }
  const auto zone =
      storedFrom(zoneWith(R"(, "position": [0.5, 1], "edge": "left", "snap": null)")).defaultZone();
  EXPECT_EQ(zone.snap, std::nullopt) << "the position wins over the earlier layout";
  EXPECT_EQ(zone.position, (ZonePosition{0.5, 1}));
}

TEST_F(ZoneStoreTest, BadZonesAreReplacedAndBadPinsAreNone) {
  for (const auto& zones :
       {std::string("[]"), std::string("{}"), std::string("[{\"name\": \"Work\"}]"),
        std::string("[{\"id\": \"x\", \"name\": \"Work\"}]"), zoneWith(R"(, "name": 5)"),
        zoneWith(R"(, "displayID": -1)"), zoneWith(R"(, "displayID": 4294967296)"),
        zoneWith(R"(, "position": [1])"), zoneWith(R"(, "position": [0, 1], "snap": "askew")"),
        zoneWith(R"(, "showsName": 1)"), zoneWith(R"(, "tabSize": "40")")}) {
    const auto store = storedFrom(zones);
    ASSERT_EQ(store.zones().size(), 1u);
    EXPECT_EQ(store.zones()[0].name, "Tabs") << zones;
  }
  for (const auto pins : {"", "[]", R"({"mail": 5})", R"({"mail": "no UUID"})"}) {
    defaults.set("pinnedApps", DefaultsData{pins});
    EXPECT_TRUE(stored().pins.empty()) << pins;
  }
}

TEST_F(ZoneStoreTest, NewZonesGetANameAndAPlaceOfTheirOwn) {
  auto store = stored();
  std::vector<double> heights;
  for (int i = 0; i < 5; ++i) heights.push_back(store.add("Zone").position.y);
  ASSERT_EQ(noticed(), 5);
  const std::vector<double> expected{0.35, 0.55, 0.75, 0.9, 0.9};
  for (int i = 0; i < 5; ++i) EXPECT_NEAR(heights[i], expected[i], 1e-12);
  std::string names;
  for (const auto& zone : store.zones()) names += zone.name + ",";
  EXPECT_EQ(names, "Tabs,Zone,Zone 2,Zone 3,Zone 4,Zone 5,");
  EXPECT_EQ(store.add("Zone 2").name, "Zone 2 2");
  EXPECT_EQ(store.zones()[1].snap, StripEdge::right);
  EXPECT_EQ(store.zones()[1].position.x, 1.0);
  EXPECT_EQ(stored().zones(), store.zones());
}

TEST_F(ZoneStoreTest, ChangesZonesItKnows) {
  auto store = stored();
  auto zone = store.defaultZone();
  zone.name = "Work";
  store.update(zone);
  EXPECT_EQ(noticed(), 1);
  EXPECT_EQ(stored().zones()[0], zone);

  zone.id = desktop.uuidSource().next();
  store.update(zone);
  EXPECT_EQ(noticed(), 0);
  EXPECT_EQ(store.zones().size(), 1u);

  zone = store.defaultZone();
  zone.tabSize = std::numeric_limits<double>::infinity();
  store.update(zone);
  EXPECT_EQ(stored().zones()[0].name, "Work") << "a save that fails leaves the stored zones";
}

TEST_F(ZoneStoreTest, TheDefaultIsTheChosenZoneElseTheFirst) {
  auto store = stored();
  const auto first = store.defaultZone();
  const auto second = store.add("Second");
  EXPECT_EQ(store.defaultZone(), first);
  noticed();
  store.setDefaultZoneID(second.id);
  EXPECT_EQ(noticed(), 1);
  EXPECT_EQ(text(defaults, "defaultZoneID"), second.id.text());
  EXPECT_EQ(stored().defaultZone(), second);
  EXPECT_EQ(store.zone(std::nullopt), second);
  EXPECT_EQ(store.zone(desktop.uuidSource().next()), second);
  for (const auto& bad : {std::string("nonsense"), desktop.uuidSource().next().text()}) {
    defaults.set("defaultZoneID", bad);
    EXPECT_EQ(store.defaultZone(), first);
  }
}

TEST_F(ZoneStoreTest, ARemovedZoneTakesItsPinsAndHandsOnItsRole) {
  auto store = stored();
  const auto first = store.defaultZone();
  EXPECT_EQ(store.remove(first.id), std::nullopt) << "the last zone stays";
  EXPECT_EQ(store.zones().size(), 1u);

  const auto second = store.add("Second"), third = store.add("Third");
  store.setDefaultZoneID(third.id);
  store.pins = {{"notes", third.id}, {"mail", second.id}, {"gone", desktop.uuidSource().next()}};
  store.savePins();
  noticed();
  EXPECT_EQ(store.remove(desktop.uuidSource().next()), std::nullopt);
  EXPECT_EQ(noticed(), 0);

  EXPECT_EQ(store.remove(third.id), first.id);
  EXPECT_EQ(noticed(), 1);
  EXPECT_EQ(text(defaults, "defaultZoneID"), first.id.text());
  const auto after = stored();
  EXPECT_EQ(after.zones(), (std::vector{first, second}));
  EXPECT_EQ(after.pinnedZone("mail"), second);
  EXPECT_FALSE(after.pins.contains("notes"));
  EXPECT_EQ(after.pinnedZone("gone"), std::nullopt) << "its zone is no more";
  EXPECT_TRUE(after.pins.contains("gone"));

  EXPECT_EQ(store.remove(second.id), first.id) << "the default stays the default";
  EXPECT_TRUE(store.remove(first.id) == std::nullopt);
}

TEST_F(ZoneStoreTest, SyncedValuesReplaceWhatDiffers) {
  auto store = stored();
  const auto first = store.defaultZone();
  const TabZone other{.id = desktop.uuidSource().next(), .name = "Other"};
  const ZoneStore::Pins pins{{"mail", other.id}};

  store.applySynced({}, pins, desktop.uuidSource().next());
  EXPECT_EQ(noticed(), 0) << "pins change without a notice";
  EXPECT_EQ(stored().pins, pins);
  EXPECT_EQ(store.zones(), std::vector{first}) << "an empty list is no list";
  EXPECT_EQ(text(defaults, "defaultZoneID"), std::nullopt) << "no zone has this id";

  store.applySynced({first, other}, pins, other.id);
  EXPECT_EQ(noticed(), 1);
  EXPECT_EQ(store.defaultZone(), other);
  EXPECT_EQ(stored().zones(), (std::vector{first, other}));

  store.applySynced({first, other}, pins, first.id);
  EXPECT_EQ(noticed(), 0);
  EXPECT_EQ(store.defaultZone(), first);
}

}  // namespace
}  // namespace pellow
