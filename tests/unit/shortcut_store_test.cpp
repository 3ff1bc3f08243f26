#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/json.h"
#include "platforms/simulated/desktop.h"
#include "shortcuts/shortcut_store.h"
#include "shortcuts/system_shortcuts.h"

namespace pellow {
namespace {

constexpr std::uint64_t controlOptionCommand = 0x1C0000;

class ShortcutStoreTest : public testing::Test {
 protected:
  ShortcutStore stored() { return {defaults, notifications}; }
  ShortcutStore storedFrom(const std::string& overrides) {
    defaults.set("shortcuts", DefaultsData{overrides});
    return stored();
  }
  int noticed() { return std::exchange(notices, 0); }

  simulated::Desktop desktop;
  UserDefaults& defaults = desktop.userDefaults();
  NotificationCenter notifications;
  int notices = 0;
  Subscription counting = notifications.observe("pellow.shortcutsDidChange", [this] { ++notices; });
};

TEST_F(ShortcutStoreTest, EveryActionHasItsDefault) {
  const auto store = stored();
  std::string displays;
  std::vector<int> keyCodes;
  for (const auto action : allCases<ShortcutAction>()) {
    EXPECT_FALSE(store.isCustom(action));
    EXPECT_EQ(fromRawValue<ShortcutAction>(rawValue(action)), action);
    displays += store.shortcut(action).display(macTexts) + " ";
    keyCodes.push_back(store.shortcut(action).keyCode);
  }
  EXPECT_EQ(displays, "⌃⌥⌘T ⌃⌥⌘F ⌃⌥⌘P ⌃⌥⌘A ⌃⌥⌘E ⌃⌥⌘R ");
  EXPECT_EQ(keyCodes, (std::vector{17, 3, 35, 0, 14, 15}));

  // Modifiers appear in the usual order of macOS.
  EXPECT_EQ((Shortcut{7, "x", 0x1E0000}).display(macTexts), "⌃⌥⇧⌘X");
  EXPECT_EQ((Shortcut{27, "ß", 0x100000}).display(macTexts), "⌘SS");
  EXPECT_EQ((Shortcut{7, "x", 0x1E0000}).display(x11Texts), "Ctrl+Alt+Shift+Super+X");
}

TEST_F(ShortcutStoreTest, BindingsSurviveARelaunchInTheirStoredForm) {
  auto store = stored();
  store.set(ShortcutAction::focusMode, {14, "e", 0x180000});
  EXPECT_EQ(noticed(), 1);
  EXPECT_EQ(nlohmann::json::parse(*data(defaults, "shortcuts")),
            nlohmann::json::parse(
                R"({"focusMode": {"keyCode": 14, "characters": "e", "modifiers": 1572864}})"));
  const auto relaunched = stored();
  EXPECT_EQ(noticed(), 0) << "loading tells nobody";
  EXPECT_TRUE(relaunched.isCustom(ShortcutAction::focusMode));
  EXPECT_EQ(relaunched.shortcut(ShortcutAction::focusMode).display(macTexts), "⌥⌘E");

  store.set(ShortcutAction::focusMode, defaultShortcut(ShortcutAction::focusMode));
  EXPECT_TRUE(store.isCustom(ShortcutAction::focusMode)) << "be it to its default";
  store.restoreDefault(ShortcutAction::focusMode);
  EXPECT_EQ(noticed(), 2);
  EXPECT_FALSE(store.isCustom(ShortcutAction::focusMode));
  EXPECT_EQ(data(defaults, "shortcuts"), "{}");
}

TEST_F(ShortcutStoreTest, DamagedEntriesDoNotHideDefaults) {
  const auto store = storedFrom(R"({
      "pellowAll": {"keyCode": 0, "characters": "a", "modifiers": 1048576},
      "focusMode": {"keyCode": 0, "characters": "", "modifiers": 1048576},
      "restoreAll": {"keyCode": 0, "characters": "A", "modifiers": 1048576},
      "ofTheFuture": {"keyCode": 5, "characters": "g", "modifiers": 1048576}})");
  EXPECT_EQ(store.shortcut(ShortcutAction::pellowAll).display(macTexts), "⌘A");
  EXPECT_EQ(store.shortcut(ShortcutAction::focusMode).display(macTexts), "⌃⌥⌘E");
  EXPECT_FALSE(store.isCustom(ShortcutAction::restoreAll));
  EXPECT_TRUE(store.overrides().contains("ofTheFuture"));
  EXPECT_EQ(store.overrides().size(), 2u);
}

TEST_F(ShortcutStoreTest, WhatCannotBeReadIsNoBinding) {
  for (const auto overrides :
       {"", "[]", "nonsense", R"({"focusMode": {"keyCode": 14, "characters": "e"}})",
        R"({"focusMode": {"keyCode": 65536, "characters": "e", "modifiers": 0}})",
        R"({"focusMode": {"keyCode": 14, "characters": "e", "modifiers": -1}})",
        R"({"focusMode": {"keyCode": 14, "characters": 5, "modifiers": 0}})"}) {
    EXPECT_TRUE(storedFrom(overrides).overrides().empty()) << overrides;
    EXPECT_EQ(data(defaults, "shortcuts"), overrides) << "stays until the next save";
  }
}

TEST_F(ShortcutStoreTest, TakesOverTheBindingsOfTheSettingsFile) {
  auto store = stored();
  store.set(ShortcutAction::focusMode, {5, "g", controlOptionCommand});
  EXPECT_EQ(store.shortcut(ShortcutAction::focusMode).display(macTexts), "⌃⌥⌘G");
  noticed();
  store.replaceOverrides({{"restoreAll", {14, "e", 0x100000}}});
  EXPECT_EQ(noticed(), 1);
  EXPECT_EQ(store.shortcut(ShortcutAction::focusMode).display(macTexts), "⌃⌥⌘E");
  EXPECT_EQ(stored().shortcut(ShortcutAction::restoreAll).display(macTexts), "⌘E");

  const auto before = data(defaults, "shortcuts");
  store.set(ShortcutAction::focusMode, {5, "\xFF", controlOptionCommand});
  EXPECT_EQ(data(defaults, "shortcuts"), before) << "a save that fails leaves what is stored";
  EXPECT_EQ(noticed(), 1);
}

class SystemShortcutsTest : public testing::Test {
 protected:
  std::optional<std::string> conflict(std::vector<SymbolicHotKey> hotKeys,
                                      const Shortcut& shortcut = {49, " ", 0x100000}) {
    desktop.symbolicHotKeys().set(std::move(hotKeys));
    return SystemShortcuts::conflictDescription(desktop.symbolicHotKeys(), shortcut, macTexts);
  }

  simulated::Desktop desktop;
};

TEST_F(SystemShortcutsTest, GoByCharacterAndModifiers) {
  EXPECT_EQ(conflict({}), std::nullopt);
  EXPECT_EQ(conflict({{"64", true, {32, 49, 0x100000}}}), "Spotlight");
  EXPECT_EQ(conflict({{"64", true, {32, 7, 0x100000}}}), "Spotlight") << "whatever the key";
  EXPECT_EQ(conflict({{"118", true, {32, 49, 0x100000}}}), "a macOS shortcut");
  EXPECT_EQ(conflict({{"64", true, {97, 49, 0x100000}}}), std::nullopt);
  EXPECT_EQ(conflict({{"64", true, {32, 49, 0x120000}}}), std::nullopt);
  EXPECT_EQ(conflict({{"64", true, {233, 0, 0x100000}}}, {27, "éx", 0x100000}), "Spotlight");
  EXPECT_EQ(conflict({{"64", true, {0, 49, 0x100000}}}, {49, "", 0x100000}), std::nullopt);
}

TEST_F(SystemShortcutsTest, MayBeKnownToBeThereOnly) {
  desktop.symbolicHotKeys().reserve(17, 0x100000, "Switch to workspace 1");
  EXPECT_EQ(conflict({}, {17, "t", 0x100000}), "Switch to workspace 1");
  desktop.symbolicHotKeys().reserve(49, 0x100000);
  EXPECT_EQ(conflict({}), "a macOS shortcut");
  EXPECT_EQ(conflict({}, {49, "", 0x100000}), "a macOS shortcut") << "it goes by the key";
  EXPECT_EQ(conflict({{"64", true, {32, 49, 0x100000}}}), "Spotlight");
  EXPECT_EQ(conflict({}, {49, " ", 0x120000}), std::nullopt);
}

TEST_F(SystemShortcutsTest, SkipWhatIsOffOrMalformed) {
  EXPECT_EQ(conflict({{"64", false, {32, 49, 0x100000}}}), std::nullopt);
  EXPECT_EQ(conflict({{"64", true, {}}, {"65", true, {32, 49}}}), std::nullopt);
  EXPECT_EQ(conflict({{"64", true, {32, 49, -1}}}, {49, " ", ~std::uint64_t{0}}), std::nullopt);
  EXPECT_EQ(conflict({{"64", true, {32, 49, -1}}, {"175", true, {32, 49, 0x100000, 9}}}),
            "Do Not Disturb");
}

}  // namespace
}  // namespace pellow
