#include "sync/settings_sync.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/json.h"
#include "platforms/simulated/desktop.h"

namespace pellow {
namespace {

using simulated::StoredFile;
using Kind = StoredFile::Kind;

const std::string folder = "/home/user/Library/Mobile Documents/com~apple~CloudDocs";
const std::string file = folder + "/Pellow/settings.json";
constexpr Seconds poll = 5;

// A machine with the program's stores.
struct Machine {
  explicit Machine(bool hasFolder = true) {
    if (hasFolder) desktop.files().disk().put(folder, "", Kind::folder);
  }

  simulated::Desktop desktop;
  NotificationCenter notifications;
  Preferences preferences{desktop.userDefaults(), notifications};
  ZoneStore zones{desktop.userDefaults(), preferences, notifications, desktop.uuidSource()};
  ShortcutStore shortcuts{desktop.userDefaults(), notifications};
  SettingsSync sync{{.files = desktop.files(),
                     .log = desktop.log(),
                     .mainQueue = desktop.queues().main(),
                     .notifications = notifications,
                     .preferences = preferences,
                     .shortcuts = shortcuts,
                     .texts = desktop.texts(),
                     .zones = zones}};

  simulated::Disk& disk() { return desktop.files().disk(); }
  nlohmann::json stored() { return nlohmann::json::parse(disk().contents(file).value()); }
  void put(const nlohmann::json& document) { disk().put(file, document.dump()); }
  bool hasApplied() const { return desktop.hasLogged("Applied settings from iCloud"); }
};

class SettingsSyncTest : public testing::Test {
 protected:
  Machine mac;
};

TEST_F(SettingsSyncTest, TheFileHoldsEverySyncedSetting) {
  mac.zones.pins["com.example.notes"] = mac.zones.defaultZone().id;
  mac.shortcuts.set(ShortcutAction::focusMode, {3, "f", 0x100000});
  mac.preferences.set(preference::tabSize, 140);
  mac.preferences.set(preference::animationDuration, 0.5);
  mac.preferences.set(preference::previewSize, std::numeric_limits<double>::infinity());
  mac.sync.start();
  const auto document = mac.stored();
  const auto zone = mac.zones.defaultZone().id.text();
  EXPECT_EQ(document.size(), 5U);
  EXPECT_EQ(document["defaultZoneID"], zone);
  EXPECT_EQ(document["pins"], (nlohmann::json{{"com.example.notes", zone}}));
  EXPECT_EQ(document["zones"], nlohmann::json(mac.zones.zones()));
  EXPECT_EQ(document["shortcuts"]["focusMode"]["characters"], "f");
  const auto& preferences = document["preferences"];
  EXPECT_EQ(preferences["showTitles"].dump(), R"({"bool":{"_0":false}})");
  EXPECT_EQ(preferences["tabSize"].dump(), R"({"number":{"_0":140}})");
  EXPECT_EQ(preferences["animationDuration"].dump(), R"({"number":{"_0":0.5}})");
  EXPECT_EQ(preferences["mechanism"].dump(), R"({"text":{"_0":"offscreen"}})");
  EXPECT_EQ(preferences.size(), 14U) << "JSON has no infinity";
  EXPECT_TRUE(mac.disk().contents(file)->contains("{\n  \"defaultZoneID\": "));

  mac.desktop.run(2 * poll);
  mac.preferences.set(preference::syncSettings, true);  // stays here
  EXPECT_EQ(mac.disk().writes, 1U);
  EXPECT_FALSE(mac.hasApplied());
}

// Every setting that the table knows, whatever it is.
TEST_F(SettingsSyncTest, EverySettingMakesTheRoundTrip) {
  Machine other(false);
  other.desktop.files().share(mac.desktop.files());
  mac.sync.start();
  other.sync.start();
  const auto before = other.preferences.exportForSync();
  std::apply(
      [&](const auto&... each) {
        const auto change = [&]<class T>(const Preference<T>& setting) {
          if (setting.sharing == Sharing::thisMachine) return;
          if constexpr (std::is_same_v<T, bool>)
            mac.preferences.set(setting, !setting.registered);
          else if constexpr (std::is_same_v<T, double>)
            mac.preferences.set(setting, setting.registered + 1.5);
          else
            mac.preferences.set(setting, allCases<T>().back() == setting.registered
                                             ? allCases<T>().front()
                                             : allCases<T>().back());
        };
        (change(each), ...);
      },
      preference::all);
  auto zone = mac.zones.add("Work");
  mac.zones.setDefaultZoneID(zone.id);
  mac.zones.pins["com.example.notes"] = zone.id;
  mac.zones.savePins();
  mac.shortcuts.set(ShortcutAction::pellowAll, {0, "a", 0x180000});
  for (auto* const machine : {&mac, &other}) machine->desktop.run(2 * poll);
  other.desktop.run(poll);
  const auto after = other.preferences.exportForSync();
  EXPECT_EQ(after, mac.preferences.exportForSync());
  for (const auto& [key, value] : before) EXPECT_NE(after.at(key), value) << key;
  EXPECT_EQ(other.zones.zones(), mac.zones.zones());
  EXPECT_EQ(other.zones.defaultZone().id, zone.id);
  EXPECT_EQ(other.zones.pins, mac.zones.pins) << "pins change without a notice";
  EXPECT_EQ(other.shortcuts.overrides(), mac.shortcuts.overrides());
}

TEST_F(SettingsSyncTest, AnotherMachinesFileIsTakenAndNotWrittenBack) {
  mac.sync.start();
  auto document = mac.stored();
  document["preferences"]["showTitles"] = {{"bool", {{"_0", true}}}};
  document.erase("defaultZoneID");
  const auto reads = mac.disk().reads;
  mac.desktop.run(poll);
  EXPECT_EQ(mac.disk().reads, reads) << "what did not change is not read";
  mac.put(document);
  mac.disk().now = 1;  // whoever writes next has a clock that lags behind
  mac.desktop.run(poll);
  EXPECT_TRUE(mac.preferences.value(preference::showTitles));
  EXPECT_TRUE(mac.hasApplied());
  const auto readsThen = mac.disk().reads;
  mac.desktop.run(4 * poll);
  EXPECT_EQ(mac.disk().writes, 1U) << "nothing echoes";
  EXPECT_EQ(mac.disk().reads, readsThen);

  document["preferences"]["showTitles"] = {{"bool", {{"_0", false}}}};
  mac.put(document);
  mac.desktop.run(poll);
  EXPECT_FALSE(mac.preferences.value(preference::showTitles));
}

TEST_F(SettingsSyncTest, AtTheStartTheFileWins) {
  {
    Machine other(false);
    other.desktop.files().share(mac.desktop.files());
    other.preferences.set(preference::tabSize, 60);
    other.sync.start();
  }
  mac.preferences.set(preference::tabSize, 50);
  mac.sync.start();
  EXPECT_EQ(mac.preferences.tabSize(), 60);
  EXPECT_EQ(mac.disk().writes, 1U);
}

TEST_F(SettingsSyncTest, AFileThatMakesNoSenseChangesNothingAndIsKept) {
  mac.sync.start();
  mac.preferences.set(preference::tabSize, 50);
  const auto good = mac.stored();
  const auto with = [&](const char* key, const char* value) {
    auto document = good;
    document["preferences"][key] = nlohmann::json::parse(value);
    return document.dump();
  };
  auto withoutPins = good;
  withoutPins.erase("pins");
  struct Case {
    std::string contents;
    Kind kind = Kind::ordinary;
  };
  const std::vector<Case> cases{{good.dump().substr(0, 200)},
                                {""},
                                {"null"},
                                {"[1]"},
                                {withoutPins.dump()},
                                {with("tabSize", R"({"number":{}})")},
                                {with("tabSize", R"({"number":{"_0":true}})")},
                                {with("tabSize", R"({"bool":{"_0":true},"text":{"_0":"x"}})")},
                                {with("tabSize", R"({})")},
                                {with("tabSize", R"({"data":{"_0":1}})")},
                                {std::string(100 << 20, '[')},
                                {"", Kind::folder},
                                {"", Kind::pipe},
                                {good.dump(), Kind::forbidden}};
  double size = 50;
  for (const auto& [contents, kind] : cases) {
    SCOPED_TRACE(contents.substr(0, 100));
    mac.disk().put(file, contents, kind);
    const auto writes = mac.disk().writes;
    mac.desktop.run(3 * poll);
    EXPECT_EQ(mac.preferences.tabSize(), size);
    EXPECT_EQ(mac.disk().writes, writes) << "a poll leaves it alone";
    size = size == 50 ? 51 : 50;
    mac.preferences.set(preference::tabSize, size);
    const auto& kept = mac.disk().files[file + ".bad"];
    EXPECT_EQ(kept.kind, kind);
    EXPECT_EQ(kept.contents, contents);
    EXPECT_EQ(mac.stored()["preferences"]["tabSize"]["number"]["_0"], size);
    mac.disk().files.erase(file + ".bad");
  }
  EXPECT_FALSE(mac.hasApplied());
  mac.put(good);
  mac.desktop.run(poll);
  EXPECT_EQ(mac.preferences.tabSize(), 50) << "the next good file is taken";

  mac.disk().put(file + ".bad", "", Kind::folder);
  mac.disk().put(file, "{");
  mac.preferences.set(preference::tabSize, 30);
  EXPECT_EQ(mac.disk().contents(file), "{") << "not written over what cannot be kept";
}

TEST_F(SettingsSyncTest, WhatCannotBeWrittenIsToldAndTriedAtTheNextChange) {
  mac.disk().isFull = "There is no room on the disk.";
  mac.sync.start();
  EXPECT_TRUE(
      mac.desktop.hasLogged("Could not write synced settings: There is no room on the disk."));
  const auto lines = mac.desktop.logged().size();
  mac.desktop.run(4 * poll);
  EXPECT_EQ(mac.desktop.logged().size(), lines) << "said once";
  mac.disk().isFull.reset();
  mac.preferences.set(preference::showTitles, true);
  EXPECT_EQ(mac.stored()["preferences"]["showTitles"]["bool"]["_0"], true);
}

TEST_F(SettingsSyncTest, WithoutTheFolderOrTheWishNothingHappens) {
  Machine alone(false);
  EXPECT_EQ(alone.sync.status(), "iCloud Drive is not available on this Mac.");
  alone.sync.start();
  alone.desktop.run(poll);
  EXPECT_TRUE(alone.disk().files.empty());
  alone.disk().put(folder, "", Kind::folder);
  EXPECT_EQ(alone.sync.status(), "iCloud Drive › Pellow › settings.json");
  alone.preferences.set(preference::showTitles, true);
  EXPECT_EQ(alone.disk().writes, 1U);

  alone.preferences.set(preference::syncSettings, false);
  alone.preferences.set(preference::showTitles, false);
  alone.disk().put(file, "{}");
  const auto reads = alone.disk().reads;
  alone.desktop.run(2 * poll);
  EXPECT_EQ(alone.disk().writes, 1U);
  EXPECT_EQ(alone.disk().reads, reads);
  alone.preferences.set(preference::syncSettings, true);
  EXPECT_EQ(alone.disk().writes, 2U);
}

// Two machines with one file; each edits when it likes, and polls at its own times.
TEST(SettingsReplicas, AgreeAfterAnyOrderOfEdits) {
  const auto* const asked = std::getenv("PELLOW_HISTORIES");
  const auto histories = asked ? std::stoul(asked) : 300;
  for (std::size_t seed = 0; seed < histories; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    Machine one;
    Machine two(false);
    two.desktop.files().share(one.desktop.files());
    Machine* const machines[]{&one, &two};
    one.sync.start();
    two.desktop.run(0.1 * below(50));
    two.sync.start();
    std::uint64_t edits = 2;
    for (unsigned step = below(30); step > 0; --step, ++edits) {
      auto& machine = *machines[below(2)];
      machine.disk().now +=
          std::int64_t{below(7'200)} * 1'000'000'000 - 3'600'000'000'000;  // clocks apart
      switch (below(7)) {
        case 0:
          machine.preferences.set(preference::tabSize, 20 + below(4));
          break;
        case 1:
          machine.preferences.set(preference::showTitles, below(2) == 0);
          break;
        case 2:
          machine.zones.add("Zone");
          break;
        case 3:
          machine.zones.remove(machine.zones.zones().back().id);
          break;
        case 4:
          machine.zones.pins["app"] = machine.zones.zones().front().id;
          machine.zones.savePins();
          break;
        case 5:
          machine.shortcuts.set(ShortcutAction::pellowAll,
                                {static_cast<std::uint16_t>(below(3)), "a", 0});
          break;
        default:
          machine.desktop.run(0.1 * below(70));
      }
    }
    for (int round = 0; round < 3; ++round)
      for (auto* const machine : machines) machine->desktop.run(poll);
    EXPECT_EQ(one.preferences.exportForSync(), two.preferences.exportForSync());
    EXPECT_EQ(one.zones.zones(), two.zones.zones());
    EXPECT_EQ(one.zones.pins, two.zones.pins);
    EXPECT_EQ(one.zones.defaultZone().id, two.zones.defaultZone().id);
    EXPECT_EQ(one.shortcuts.overrides(), two.shortcuts.overrides());
    EXPECT_LE(one.disk().writes, edits);
    if (testing::Test::HasFailure()) break;
  }
}

}  // namespace
}  // namespace pellow
