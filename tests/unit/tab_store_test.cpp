#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "model/tab_store.h"
#include "platforms/simulated/desktop.h"
#include "tests/unit/scripted_element.h"

namespace pellow {
namespace {

class TabStoreTest : public testing::Test {
 protected:
  // A tab whose title is the number of its window.
  TabItem tab(int thing, ProcessID pid = 1) {
    return {.id = desktop.uuidSource().next(),
            .window = {AXElement(scriptedElement(thing)), pid},
            .title = std::to_string(thing)};
  }
  std::vector<UUID> addTabs(int count) {
    std::vector<UUID> ids;
    for (int thing = 1; thing <= count; ++thing) {
      store.add(tab(thing));
      ids.push_back(store.tabs().back().id);
    }
    notices = 0;
    return ids;
  }
  std::string titles() const {
    std::string titles;
    for (const auto& tab : store.tabs()) titles += tab.title;
    return titles;
  }
  // The number of notices since the last call.
  int noticed() { return std::exchange(notices, 0); }

  simulated::Desktop desktop;
  NotificationCenter notifications;
  TabStore store{notifications, desktop.workspace()};
  int notices = 0;
  Subscription counting = notifications.observe("pellow.tabsDidChange", [this] { ++notices; });
};

TEST_F(TabStoreTest, KeepsTheOrderAndTellsOfEveryCall) {
  store.add(tab(1));
  EXPECT_EQ(noticed(), 1);
  const auto ids = addTabs(4);
  EXPECT_EQ(titles(), "11234");

  store.remove(store.tabs()[1]);
  EXPECT_EQ(titles(), "1234");
  EXPECT_EQ(noticed(), 1);
  store.remove(std::vector{ids[3], ids[1], ids[1]});
  EXPECT_EQ(titles(), "13");
  EXPECT_EQ(noticed(), 1);
  store.remove(std::vector<UUID>{});
  EXPECT_EQ(noticed(), 1) << "posts although nothing matched";
  EXPECT_EQ(store.tab(ids[2])->title, "3");
  EXPECT_EQ(store.tab(ids[1]), nullptr);
}

TEST_F(TabStoreTest, TheSettersTellOncePerTab) {
  const auto ids = addTabs(3);
  const std::vector some{ids[2], ids[0], desktop.uuidSource().next()};
  const auto zone = desktop.uuidSource().next();
  store.setZone(zone, ids);
  EXPECT_EQ(noticed(), 3);
  store.setSize(40, some);
  EXPECT_EQ(noticed(), 2);
  store.setShowsTitle(true, some);
  EXPECT_EQ(noticed(), 2);
  EXPECT_EQ(store.tabs()[0].size, 40);
  EXPECT_EQ(store.tabs()[1].size, std::nullopt);
  EXPECT_EQ(store.tabs()[2].showsTitle, true);
  EXPECT_EQ(store.tabs()[1].zoneID, zone);

  store.setSize(std::nullopt, ids);
  EXPECT_EQ(store.tabs()[0].size, std::nullopt);
  EXPECT_EQ(noticed(), 3);
  store.setZone(zone, {});
  store.setShowsTitle(false, std::vector{zone});
  EXPECT_EQ(noticed(), 0);
}

TEST_F(TabStoreTest, ReassignsTheTabsOfAZoneAndOfNone) {
  const auto ids = addTabs(3);
  const auto zone = desktop.uuidSource().next(), other = desktop.uuidSource().next();
  store.setZone(zone, std::vector{ids[1]});
  noticed();
  store.reassign(std::nullopt, other);
  EXPECT_EQ(noticed(), 2);
  EXPECT_EQ(store.tab(ids[0])->zoneID, other);
  EXPECT_EQ(store.tab(ids[1])->zoneID, zone);
  store.reassign(zone, std::nullopt);
  EXPECT_EQ(noticed(), 1);
  EXPECT_EQ(store.tab(ids[1])->zoneID, std::nullopt);
  store.reassign(zone, other);
  EXPECT_EQ(noticed(), 0);
}

TEST_F(TabStoreTest, ObserversMayEmptyTheStoreInTheMiddle) {
  const auto ids = addTabs(3);
  const auto emptying = notifications.observe(TabStore::didChange, [&] {
    if (!store.tabs().empty()) store.remove(store.tabs().front());
  });
  store.setSize(20, ids);
  EXPECT_TRUE(store.tabs().empty());
}

TEST_F(TabStoreTest, AWindowIsItsElement) {
  store.add(tab(1, 10));
  EXPECT_TRUE(store.contains({AXElement(scriptedElement(1)), 11}));
  EXPECT_FALSE(store.contains({AXElement(scriptedElement(2)), 10}));
}

TEST_F(TabStoreTest, PrunesOnlyWhatIsSurelyGone) {
  const auto add = [&](int thing, ScriptedElement::Answer role) {
    const auto element = scriptedElement(thing);
    element->answer("AXRole", role);
    auto added = tab(thing);
    added.window.element = AXElement(element);
    store.add(added);
  };
  const auto prune = [&] {
    std::vector<UUID> dead;
    for (const auto& each : store.tabs())
      if (each.window.isGone().value_or(false)) dead.push_back(each.id);
    noticed();
    store.pruneDead(dead);
    return noticed();
  };
  add(1, "AXWindow");
  add(2, std::unexpected(AXError::cannotComplete));
  add(3, std::unexpected(AXError::failure));
  EXPECT_EQ(prune(), 0);

  add(4, std::unexpected(AXError::invalidUIElement));
  add(5, std::unexpected(AXError::invalidUIElement));
  add(6, std::unexpected(AXError::apiDisabled));
  EXPECT_EQ(prune(), 1);
  EXPECT_EQ(titles(), "1236");
}

TEST_F(TabStoreTest, TheTabsOfAnApplicationGoWithIt) {
  const auto notes = desktop.launch("Notes"), mail = desktop.launch("Mail");
  store.add(tab(1, notes.pid()));
  store.add(tab(2, mail.pid()));
  store.add(tab(3, notes.pid()));
  store.setZone(desktop.uuidSource().next(), std::vector{store.tabs()[0].id});
  noticed();

  notes.quit();
  desktop.runUntilQuiet();
  EXPECT_EQ(titles(), "2");
  EXPECT_EQ(noticed(), 1);
  desktop.launch("Clock").quit();
  desktop.runUntilQuiet();
  EXPECT_EQ(titles(), "2");
  EXPECT_EQ(noticed(), 1) << "posts although no tab was its own";
}

}  // namespace
}  // namespace pellow
