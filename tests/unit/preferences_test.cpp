#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "model/preferences.h"
#include "platforms/simulated/simulated_platform.h"

namespace pellow {
namespace {

class PreferencesTest : public testing::Test {
 protected:
  int noticed() { return std::exchange(notices, 0); }

  simulated::SimulatedPlatform platform;
  UserDefaults& defaults = platform.userDefaults();
  NotificationCenter notifications;
  Preferences preferences{defaults, notifications};
  int notices = 0;
  Subscription counting =
      notifications.observe("pellow.preferencesDidChange", [this] { ++notices; });
};

TEST_F(PreferencesTest, HaveTheirDefaults) {
  using namespace preference;
  for (const auto key : {thumbnailTabs, animateFlight, restoreOnActivation, pellowOnMinimize,
                         floatAboveWindows, previewOnHover, syncSettings})
    EXPECT_TRUE(boolean(defaults, key)) << key;
  for (const auto key : {showTitles, tabsOnAllScreens, useThumbnails, autoHideStrip}) {
    EXPECT_FALSE(boolean(defaults, key)) << key;
    EXPECT_TRUE(defaults.value(key)) << key;
  }
  EXPECT_EQ(preferences.mechanism(), Mechanism::offscreen);
  EXPECT_EQ(preferences.tabScope(), TabScope::window);
  EXPECT_EQ(text(defaults, edge), "right");
  EXPECT_EQ(number(defaults, animationDuration), 0.32);
  EXPECT_EQ(preferences.tabSize(), 34);
  EXPECT_EQ(number(defaults, previewSize), 320);
}

TEST_F(PreferencesTest, TextsWithoutAMeaningHaveAFallback) {
  defaults.set("mechanism", "dock");
  EXPECT_EQ(preferences.mechanism(), Mechanism::minimize);
  defaults.set("mechanism", DefaultsData{"offscreen"});
  EXPECT_EQ(preferences.mechanism(), Mechanism::minimize);
  defaults.set("tabScope", "App");
  EXPECT_EQ(preferences.tabScope(), TabScope::window);
  defaults.set("tabScope", "app");
  EXPECT_EQ(preferences.tabScope(), TabScope::app);
}

TEST_F(PreferencesTest, ChoicesAreStoredAndAnnounced) {
  preferences.setMechanism(Mechanism::hideApp);
  preferences.setTabScope(TabScope::app);
  EXPECT_EQ(noticed(), 2);
  EXPECT_EQ(text(defaults, "mechanism"), "hideApp");
  EXPECT_EQ(preferences.mechanism(), Mechanism::hideApp);
  EXPECT_EQ(preferences.tabScope(), TabScope::app);
}

TEST_F(PreferencesTest, TabsAreFrom20To72PointsAndShowPicturesWhenBothSwitchesAreOn) {
  for (const auto& [stored, size] : {std::pair{5.0, 20.0}, {20.5, 20.5}, {500, 72}}) {
    defaults.set("tabSize", stored);
    EXPECT_EQ(preferences.tabSize(), size);
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
  EXPECT_EQ(platform.desktop().storedDefault("tabSize"), DefaultsValue(34.0));
}

}  // namespace
}  // namespace pellow
