#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "model/preferences.h"
#include "platforms/simulated/desktop.h"

namespace pellow {
namespace {

class PreferencesTest : public testing::Test {
 protected:
  int noticed() { return std::exchange(notices, 0); }

  simulated::Desktop desktop;
  UserDefaults& defaults = desktop.userDefaults();
  NotificationCenter notifications;
  Preferences preferences{defaults, notifications};
  int notices = 0;
  Subscription counting =
      notifications.observe("pellow.preferencesDidChange", [this] { ++notices; });
};

TEST_F(PreferencesTest, TextsWithoutAMeaningHaveAFallback) {
  defaults.set("mechanism", "dock");
  EXPECT_EQ(preferences.mechanism(), Mechanism::minimize);
  defaults.set("mechanism", DefaultsData{"offscreen"});
  EXPECT_EQ(preferences.mechanism(), Mechanism::minimize);
  defaults.set("tabScope", "App");
  EXPECT_EQ(preferences.tabScope(), TabScope::window);
  defaults.set("edge", "middle");
  EXPECT_EQ(preferences.value(preference::edge), StripEdge::right);
  defaults.set("tabScope", "app");
  EXPECT_EQ(preferences.tabScope(), TabScope::app);
}

TEST_F(PreferencesTest, EveryWriteIsStoredAndAnnounced) {
  preferences.set(preference::mechanism, Mechanism::hideApp);
  preferences.set(preference::floatAboveWindows, false);
  preferences.set(preference::previewSize, 200);
  EXPECT_EQ(noticed(), 3);
  EXPECT_EQ(text(defaults, "mechanism"), "hideApp");
  EXPECT_EQ(preferences.mechanism(), Mechanism::hideApp);
  EXPECT_EQ(defaults.value("floatAboveWindows"), DefaultsValue(false));
  EXPECT_EQ(preferences.value(preference::previewSize), 200);
}

TEST_F(PreferencesTest, SizesAndDurationsStayWithinTheirBoundsAndPicturesNeedBothSwitches) {
  for (const auto& [stored, size] : {std::pair{5.0, 20.0}, {20.5, 20.5}, {500, 72}}) {
    defaults.set("tabSize", stored);
    EXPECT_EQ(preferences.tabSize(), size);
  }
  for (const auto& [stored, used] : {std::pair{0.05, 0.1}, {0.5, 0.5}, {3.0, 1.2}}) {
    defaults.set("animationDuration", stored);
    EXPECT_EQ(preferences.animationDuration(), used);
  }
  for (const auto& [stored, used] : {std::pair{100, 160}, {500, 500}, {1000, 640}}) {
    defaults.set("previewSize", static_cast<double>(stored));
    EXPECT_EQ(preferences.previewSize(), used);
  }
  EXPECT_FALSE(preferences.pictureTabs());
  defaults.set("useThumbnails", true);
  EXPECT_TRUE(preferences.pictureTabs());
  defaults.set("thumbnailTabs", false);
  EXPECT_FALSE(preferences.pictureTabs());
}

TEST_F(PreferencesTest, WhatIsSharedExcludesWhatIsOfThisMachine) {
  defaults.set("tabSize", 40.0);
  const auto shared = preferences.exportForSync();
  EXPECT_EQ(shared.size(), 15u);
  EXPECT_EQ(shared.at("tabSize"), DefaultsValue(40.0));
  EXPECT_EQ(shared.at("mechanism"), DefaultsValue("offscreen"));
  EXPECT_EQ(shared.at("previewOnHover"), DefaultsValue(true));
  EXPECT_FALSE(shared.contains("edge"));
  EXPECT_FALSE(shared.contains("syncSettings"));
}

TEST_F(PreferencesTest, SharedValuesAreWrittenEvenWhenTheyAreTheSame) {
  preferences.applySynced({{"edge", "left"}, {"syncSettings", false}, {"unknown", 1.0}});
  EXPECT_EQ(noticed(), 0);
  EXPECT_EQ(text(defaults, "edge"), "right");
  EXPECT_TRUE(boolean(defaults, "syncSettings"));
  EXPECT_FALSE(defaults.value("unknown"));

  preferences.applySynced({{"tabSize", 34.0}, {"showTitles", false}});
  EXPECT_EQ(noticed(), 1);
  EXPECT_EQ(desktop.userDefaults().stored("tabSize"), DefaultsValue(34.0));
}

}  // namespace
}  // namespace pellow
