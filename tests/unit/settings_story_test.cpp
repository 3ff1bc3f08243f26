#include <gtest/gtest.h>

#include <fmt/ranges.h>

#include <algorithm>
#include <string>
#include <vector>

#include "access/pellow_error.h"
#include "base/json.h"
#include "platforms/simulated/form_window.h"
#include "tests/unit/program.h"
#include "ui/relative_date.h"
#include "ui/settings_window_controller.h"

// The settings window: what it shows, what it writes, and how it follows.

namespace pellow {
namespace {

using simulated::FormWindow;
using Lines = std::vector<std::string>;

class Settings : public Story {
 protected:
  void open(const std::string& pane = "General") {
    if (!program) launch();
    program->showSettings();
    desktop.runUntilQuiet();
    window().selectPane(pane);
  }
  FormWindow& window() { return desktop.formWindows().window("pellow-settings"); }
  template <class Act>
  void user(Act act) {
    act(window());
    desktop.runUntilQuiet();
  }
  std::optional<DefaultsValue> stored(std::string_view key) {
    return desktop.userDefaults().stored(key);
  }
  bool shows(std::string_view line) { return std::ranges::count(window().lines(), line) == 1; }
  std::string shown() { return fmt::format("{}", fmt::join(window().lines(), "\n")); }
  void record(const std::string& action, std::uint16_t keyCode, std::uint64_t modifiers,
              const std::string& characters) {
    user([&](auto& settings) { settings.press(action); });
    EXPECT_TRUE(shown().contains("  <Press keys…>"));
    desktop.keyboard().press(keyCode, modifiers, characters);
    desktop.runUntilQuiet();
    EXPECT_FALSE(shown().contains("<Press keys…>"));
  }
};

TEST_F(Settings, EveryControlWritesItsValueAndItsNotesFollow) {
  open();
  EXPECT_EQ(window().panes(),
            (Lines{"General", "Appearance", "Zones", "Shortcuts", "Permissions"}));
  const auto expect = [&](const char* key, const DefaultsValue& value, const Lines& lines) {
    EXPECT_EQ(stored(key), value) << key;
    for (const auto& line : lines) EXPECT_TRUE(shows(line)) << line << "\n in\n" << shown();
  };
  const auto choose = [&](const char* row, const char* title) {
    user([&](auto& settings) { settings.choose(row, title); });
  };
  choose("Tabs represent", "One tab per app");
  expect("tabScope", "app", {"Tabs represent  One tab per app ▾"});
  choose("When pellowing", "Hide whole app (no Dock, animates to tab)");
  expect("mechanism", "hideApp",
         {"When pellowing  Hide whole app (no Dock, animates to tab) ▾",
          "Tabs represent  One tab per app ▾ (disabled)",
          "Hiding a whole app can only produce one tab per app."});
  choose("When pellowing", "Minimize to Dock (genie animation)");
  expect("mechanism", "minimize", {"Tabs represent  One tab per app ▾"});

  const auto drag = [&](const char* row, double value) {
    user([&](auto& settings) { settings.drag(row, value); });
  };
  window().selectPane("Appearance");
  drag("Size", 60);
  expect("tabSize", 60.0, {"60 pt. Right-click any tab to override it individually."});
  drag("Preview size", 200);
  expect("previewSize", 200.0,
         {"200 pt wide. The height follows each window's own shape, and the preview appears on "
          "whichever side keeps it on screen."});
  drag("Duration", 9);
  expect("animationDuration", 1.2,
         {"Duration  slider 1.2 [0.1, 1.2]", "Left is faster. Currently 1.20 seconds.",
          std::string(macTexts.minimizeFlightNote)});
  const std::string images = "Show the window image on tabs, not just the app icon";
  EXPECT_TRUE(shows("☑ " + images + " (disabled)"));
  EXPECT_TRUE(shows("Needs real window images, on the Permissions tab."));

  struct Switch {
    const char* pane;
    std::string title;
    const char* key;
    bool isOn;
  };
  for (const auto& [pane, title, key, isOn] : std::vector<Switch>{
           {"General", "Pellow a window whenever it is minimized", "pellowOnMinimize", false},
           {"General", "Bring a window back when you switch to its app", "restoreOnActivation",
            false},
           {"General", "Show tabs on all displays", "tabsOnAllScreens", true},
           {"General", "Auto-hide tabs", "autoHideStrip", true},
           {"General", "Sync settings across my Macs with iCloud", "syncSettings", false},
           {"Permissions", "Use real window images", "useThumbnails", true},
           {"Appearance", "Show window titles", "showTitles", true},
           {"Appearance", images, "thumbnailTabs", false},
           {"Appearance", "Fly the window to its tab", "animateFlight", false},
           {"Appearance", "Show a larger preview when hovering a tab", "previewOnHover", false}}) {
    window().selectPane(pane);
    user([&](auto& settings) { settings.toggle(title); });
    expect(key, isOn, {(isOn ? "☑ " : "☐ ") + title});
    EXPECT_EQ(window().selectedPane(), pane);
  }
  EXPECT_TRUE(shows("Preview size  slider 200 [160, 640] (disabled)"));
  EXPECT_TRUE(shows("Turn the preview on to change its size."));
  EXPECT_FALSE(shown().contains("Needs real window images"));
}

TEST_F(Settings, WhatChangesElsewhereShowsAtOnceWhileTheWindowIsOpen) {
  desktop.userDefaults().put("animationDuration", 3.0);
  desktop.userDefaults().put("tabSize", 150.0);
  desktop.screenCapture().allow(false);
  desktop.updateFramework().start({});
  open("Appearance");
  EXPECT_TRUE(shows("Left is faster. Currently 1.20 seconds."));
  EXPECT_TRUE(shows("Size  slider 72 [20, 72]"));
  EXPECT_EQ(window().control<Slider>("Duration").tickMarks, 12);

  window().selectPane("Permissions");
  EXPECT_EQ(window().lines().at(2), "checkmark.circle.fill Granted");
  EXPECT_EQ(window().lines().at(5),
            "exclamationmark.triangle.fill Not granted  <Open System Settings>");
  user([](auto& settings) { settings.toggle("Use real window images"); });
  EXPECT_EQ(desktop.screenCapture().requests(), 1);
  user([](auto& settings) { settings.press("Open System Settings"); });
  desktop.accessibility().setTrusted(false);
  desktop.screenCapture().allow(true);
  desktop.run(1);
  EXPECT_EQ(window().lines().at(5), "checkmark.circle.fill Granted");
  user([](auto& settings) { settings.press("Open System Settings"); });
  EXPECT_EQ(desktop.workspace().openedURLs(),
            (Lines{"x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture",
                   "x-apple.systempreferences:com.apple.preference.security?Privacy_"
                   "Accessibility"}));
  user([](auto& settings) {
    settings.toggle("Use real window images");
    settings.toggle("Use real window images");
  });
  EXPECT_EQ(desktop.screenCapture().requests(), 1) << "granted already";

  window().selectPane("General");
  EXPECT_TRUE(shows("☐ Open Pellow at login"));
  EXPECT_TRUE(shows("Not checked yet."));
  EXPECT_TRUE(shows("You have version 1.0"));
  desktop.loginItem().userSets(true);
  desktop.workspace().keepWindowsOnDisplays();
  user([](auto& settings) { settings.press("Check Now"); });
  desktop.run(120);
  EXPECT_TRUE(shows("☑ Open Pellow at login"));
  EXPECT_TRUE(shows("Last checked 2 minutes ago"));
  EXPECT_EQ(window().lines().at(3), macTexts.offscreenIsMinimize);
  user([](auto& settings) { settings.toggle("Open Pellow at login"); });
  EXPECT_FALSE(desktop.loginItem().isEnabled());
  EXPECT_TRUE(shows("☐ Open Pellow at login"));
  user([](auto& settings) { settings.toggle("Check for updates automatically"); });
  EXPECT_TRUE(shows("☐ Check for updates automatically"));

  window().close();
  desktop.loginItem().userSets(true);
  desktop.run(5);
  EXPECT_TRUE(shows("☐ Open Pellow at login")) << "nobody looks";
  open();
  EXPECT_TRUE(shows("☑ Open Pellow at login"));
  desktop.loginItem().failNextChange({"The disk is full."});
  user([](auto& settings) { settings.toggle("Open Pellow at login"); });
  EXPECT_TRUE(desktop.hasLogged("Launch at login: The disk is full."));
  EXPECT_TRUE(shows("☑ Open Pellow at login"));

  window().selectPane("Permissions");
  desktop.process().failNextLaunch({"The disk is full."});
  user([](auto& settings) { settings.press("Relaunch Pellow"); });
  EXPECT_TRUE(desktop.hasLogged("Relaunch failed: The disk is full."));
  ASSERT_TRUE(desktop.process().isRunning());
  user([](auto& settings) { settings.press("Relaunch Pellow"); });
  EXPECT_EQ(desktop.process().launchedInstances(), 1);
  EXPECT_FALSE(desktop.process().isRunning());
}

TEST(RelativeDate, TakesTheLargestUnitThatFits) {
  constexpr Seconds hour = 3600;
  Lines said;
  for (const Seconds ago : {0.0, 1.9, 59.9, 60.0, 2 * hour + 59, 24 * hour, 24 * hour * 13,
                            24 * hour * 70, 24 * hour * 800})
    said.push_back(relativeDate(ago));
  EXPECT_EQ(said, (Lines{"0 seconds ago", "1 second ago", "59 seconds ago", "1 minute ago",
                         "2 hours ago", "1 day ago", "1 week ago", "2 months ago", "2 years ago"}));
}

TEST_F(Settings, ZonesComeGoAndChange) {
  desktop.launch("Notes", "com.example.notes").openWindow("Shopping", {100, 120, 800, 600});
  launch();
  program->pressPellow();
  open("Zones");
  EXPECT_TRUE(shows("Tabs  Right edge ▾  ☐ Name  ◉ Default  <Remove> (disabled)"));
  user([](auto& settings) { settings.press("Add Zone"); });
  const auto zones = [&] {
    return *decodeJSON<std::vector<TabZone>>(std::get<DefaultsData>(*stored("zones")).bytes);
  };
  const auto key = [&](std::size_t zone, const std::string& control) {
    return zones().at(zone).id.text() + "-" + control;
  };
  for (const auto& [typed, name] : {std::pair{" \u3000Work\t", "Work"}, {" \u00a0 ", "Work"}}) {
    user([&](auto& settings) {
      settings.type(key(1, "name"), typed);
      settings.pressReturn();
    });
    EXPECT_EQ(window().textIn(key(1, "name")), name);
    EXPECT_EQ(zones().at(1).name, name);
  }
  user([&](auto& settings) { settings.choose("Edge of Work", "Top edge"); });
  EXPECT_EQ(zones().at(1).snap, StripEdge::top);
  user([&](auto& settings) { settings.toggle("Name of Work"); });
  EXPECT_TRUE(zones().at(1).showsName);
  user([&](auto& settings) { settings.press("Default: Tabs"); });
  user([&](auto& settings) { settings.press("Default: Work"); });
  EXPECT_EQ(stored("defaultZoneID"), DefaultsValue(zones().at(1).id.text()));
  EXPECT_TRUE(shows("Tabs  Right edge ▾  ☐ Name  ○ Default  <Remove>"));
  EXPECT_TRUE(shows("Work  Top edge ▾  ☑ Name  ◉ Default  <Remove>"));

  // A strip that is dragged away from all edges.
  const auto* const strip = desktop.panels().visible("pellow-strip").at(0);
  desktop.pointer().drag(strip->frame().origin + AppKitVector{2, 22}, {700, 450}, 5);
  desktop.runUntilQuiet();
  EXPECT_TRUE(shows("Work  ▾  ☑ Name  ◉ Default  <Remove>")) << shown();

  // What was clicked when the zone had just gone.
  const auto gone = key(0, "");
  const auto name = window().control<TextField>(gone + "name");
  const auto edge = window().control<PopUpButton>(gone + "edge");
  const auto box = window().control<CheckBox>(gone + "showsName");
  const auto radio = window().control<RadioButton>(gone + "default");
  const auto button = window().control<PushButton>(gone + "remove");
  user([&](auto& settings) { settings.press("Remove Tabs"); });
  const auto left = zones();
  const auto chosen = stored("defaultZoneID");
  name.onEnded("Ghost");
  edge.onChosen(0);
  box.onToggled(true);
  radio.onChosen();
  button.onClick();
  EXPECT_EQ(zones(), left);
  EXPECT_EQ(stored("defaultZoneID"), chosen);
  EXPECT_TRUE(shows("Work  ▾  ☑ Name  ◉ Default  <Remove> (disabled)"));
  const auto place = program->tab("Shopping");
  user([](auto& settings) { settings.press("Add Zone"); });
  user([](auto& settings) { settings.press("Default: New zone"); });
  EXPECT_EQ(program->tab("Shopping"), place) << "the tabs belong to the zone that was left";
}

// ⌃⌥⌘ and a key that is nobody's, to begin with.
TEST_F(Settings, ShortcutsAreRecordedByTheirRules) {
  constexpr auto all = Program::modifiers;
  constexpr auto shift = modifier::shift;
  desktop.symbolicHotKeys().set({{"28", true, {'s', 1, all}}, {"118", true, {'d', 2, all}}});
  open("Shortcuts");
  const std::string focus = "Focus: pellow everything else";
  const auto tooltip = [&] {
    return simulated::placeOf<PushButton>(window().pane(), "focusMode").element->tooltip;
  };
  const auto rowIs = [&](const std::string& display) {
    EXPECT_TRUE(shows(focus + "  <" + display + ">")) << shown();
  };
  rowIs("⌃⌥⌘E");
  EXPECT_EQ(tooltip(), "Default shortcut.");
  EXPECT_EQ(simulated::placeOf<PushButton>(window().pane(), "focusMode").element->accessibleName,
            focus + ": ⌃⌥⌘E");

  struct Press {
    std::uint16_t keyCode;
    std::uint64_t modifiers;
    std::string characters;
    std::string answer;  // of the alert
    std::string shown;
  };
  const std::string typing =
      "That needs a modifier\nA shortcut without ⌘, ⌥ or ⌃ would fire while you were typing.";
  const std::string both =
      ". Pellow does not take a shortcut over, so both would fire. Pick another combination.";
  for (const auto& press : std::vector<Press>{
           {40, shift, "K", typing, "⌃⌥⌘E"},
           {40, 0x10000, "k", typing, "⌃⌥⌘E"},  // Caps Lock
           {3, all, "f", "Already used by Pellow\n⌃⌥⌘F is set to Keep tabs above other windows.",
            "⌃⌥⌘E"},
           {1, all, "s", "macOS uses that shortcut\n⌃⌥⌘S belongs to Screenshots" + both, "⌃⌥⌘E"},
           {2, all, "d", "macOS uses that shortcut\n⌃⌥⌘D belongs to a macOS shortcut" + both,
            "⌃⌥⌘E"},
           {14, all, "e", "", "⌃⌥⌘E"},
           {40, modifier::option | shift | 0x800000, "K", "", "⌥⇧K"},
           {15, all, "r", "Already used by Pellow\n⌃⌥⌘R is set to Restore all tabs.", "⌥⇧K"}}) {
    record(focus, press.keyCode, press.modifiers, press.characters);
    EXPECT_EQ(program->answerAlert(), press.answer);
    rowIs(press.shown);
    EXPECT_TRUE(tooltip().starts_with(press.answer.empty() ? "Custom. " : "")) << tooltip();
  }
  EXPECT_EQ(std::get<DefaultsData>(*stored("shortcuts")).bytes,
            R"({"focusMode":{"characters":"k","keyCode":40,"modifiers":655360}})");
  EXPECT_EQ(tooltip(), "Custom. Press Escape while recording to restore the default.");
  EXPECT_FALSE(desktop.hasLogged("Shortcut fired: focusMode"));
  EXPECT_FALSE(desktop.hasLogged("Shortcut fired: restoreAll")) << "no binding fires meanwhile";

  // The button that was clicked last records; the window may close meanwhile.
  user([&](auto& settings) { settings.press("Pellow everything"); });
  user([&](auto& settings) { settings.press(focus); });
  rowIs("Press keys…");
  EXPECT_TRUE(shows("Pellow everything  <⌃⌥⌘A>"));
  window().close();
  open("Shortcuts");
  rowIs("Press keys…");
  desktop.keyboard().press(53);
  desktop.runUntilQuiet();
  rowIs("⌃⌥⌘E");
  EXPECT_EQ(tooltip(), "Default shortcut.");
  desktop.keyboard().press(14, all);
  desktop.runUntilQuiet();
  EXPECT_TRUE(desktop.hasLogged("Shortcut fired: focusMode"));

  desktop.eventMonitors().allow(false);
  user([&](auto& settings) { settings.press(focus); });
  rowIs("⌃⌥⌘E");
}

TEST(SettingsWindowController, ShowsAtOnceWhatOtherCodeChanges) {
  simulated::Desktop desktop;
  NotificationCenter notifications;
  Preferences preferences(desktop.userDefaults(), notifications);
  ZoneStore zones(desktop.userDefaults(), preferences, notifications, desktop.uuidSource());
  ShortcutStore shortcuts(desktop.userDefaults(), notifications);
  TabStore tabs(notifications, desktop.workspace());
  AlertPresenter alerts(desktop.alerts());
  SettingsWindowController settings({.accessibility = desktop.accessibility(),
                                     .alerts = alerts,
                                     .eventMonitors = desktop.eventMonitors(),
                                     .formWindows = desktop.formWindows(),
                                     .log = desktop.log(),
                                     .loginItem = desktop.loginItem(),
                                     .mainQueue = desktop.queues().main(),
                                     .notifications = notifications,
                                     .preferences = preferences,
                                     .screenCapture = desktop.screenCapture(),
                                     .shortcuts = shortcuts,
                                     .symbolicHotKeys = desktop.symbolicHotKeys(),
                                     .tabs = tabs,
                                     .texts = desktop.texts(),
                                     .updates = desktop.updateFramework(),
                                     .workspace = desktop.workspace(),
                                     .zones = zones});
  settings.present();
  auto& window = desktop.formWindows().window("pellow-settings");
  const auto shows = [&](const char* pane, const std::string& line) {
    window.selectPane(pane);
    return std::ranges::count(window.lines(), line) == 1;
  };
  preferences.set(preference::showTitles, true);
  EXPECT_TRUE(shows("Appearance", "☑ Show window titles"));
  zones.add("Work");
  EXPECT_TRUE(shows("Zones", "Work  Right edge ▾  ☐ Name  ○ Default  <Remove>"));
  shortcuts.set(ShortcutAction::restoreAll, {40, "k", modifier::option});
  EXPECT_TRUE(shows("Shortcuts", "Restore all tabs  <⌥K>"));
  settings.setSyncStatus("In a folder.");
  EXPECT_TRUE(shows("General", std::string(macTexts.syncNote) + "In a folder."));
  window.close();
  desktop.runUntilQuiet();
  settings.setSyncStatus("Nowhere.");
  EXPECT_TRUE(window.reads(std::string(macTexts.syncNote) + "In a folder.")) << "nobody looks";
}

// --- On X11

TEST_F(Settings, ANewUserIsToldOnceWhatToDoFirst) {
  desktop.setTexts(x11Texts);
  launch();
  ASSERT_TRUE(window().isVisible());
  const auto hint = [](const std::string& focus) {
    return "Go to any other window and press Ctrl+Alt+Super+T: it becomes a tab at the side of the "
           "screen. A click on the tab brings it back, Ctrl+Alt+Super+R brings all of them. " +
           focus + " puts everything else away.";
  };
  EXPECT_EQ(window().lines().at(0), hint("Ctrl+Alt+Super+E"));
  window().selectPane("Shortcuts");
  record("Focus: pellow everything else", 40, modifier::option, "k");
  window().selectPane("General");
  EXPECT_EQ(window().lines().at(0), hint("Alt+K"));

  const auto opensAfter = [](simulated::DesktopState left) {
    simulated::Desktop again(std::move(left));
    const Program program(again);
    return std::ranges::any_of(again.windows(),
                               [](auto each) { return each.title() == "Pellow Settings"; });
  };
  EXPECT_EQ(stored("firstMinuteShown"), DefaultsValue(true));
  desktop.run(1);
  EXPECT_FALSE(opensAfter(desktop.snapshot())) << "it was shown";
  simulated::Desktop mac;
  EXPECT_FALSE(opensAfter(mac.snapshot()));
  simulated::Desktop other;
  other.setTexts(x11Texts);
  EXPECT_TRUE(opensAfter(other.snapshot()));
  other.userDefaults().put("firstMinuteShown", true);
  EXPECT_FALSE(opensAfter(other.snapshot()));
  other.userDefaults().put("firstMinuteShown", false);
  other.userDefaults().put("zones", *stored("zones"));
  EXPECT_FALSE(opensAfter(other.snapshot())) << "somebody has used it before there was a hint";
}

// Every text that the program can show a person there, or have read out.
TEST_F(Settings, NoTextOnX11SpeaksOfAMac) {
  Lines said;
  const auto readForm = [&] {
    for (const auto& pane : window().panes()) {
      window().selectPane(pane);
      for (const auto& line : window().lines()) said.push_back(line);
      for (const auto& place : simulated::placesIn(window().pane())) {
        said.push_back(place.element->tooltip);
        said.push_back(place.element->accessibleName);
        const auto& content = place.element->content;
        if (std::get_if<Slider>(&content) || std::get_if<TextField>(&content))
          EXPECT_FALSE(said.back().empty()) << place.element->key;
        if (const auto* popUp = std::get_if<PopUpButton>(&content))
          said.insert(said.end(), popUp->titles.begin(), popUp->titles.end());
      }
    }
  };
  const auto readAlert = [&] {
    while (!desktop.alerts().showing().empty()) {
      const auto alert = desktop.alerts().showing().front();
      said.insert(said.end(), alert.buttons.begin(), alert.buttons.end());
      said.push_back(program->answerAlert(alert.buttons.back()));
    }
  };
  desktop.setTexts(x11Texts);
  desktop.userDefaults().put("useThumbnails", true);
  desktop.screenCapture().allow(false);
  desktop.accessibility().setTrusted(false);
  launch();
  readAlert();
  desktop.accessibility().setTrusted(true);
  desktop.run(1);
  readAlert();
  desktop.launch("Notes", "com.example.notes").openWindow("A", {100, 120, 800, 600});
  for (const bool keeps : {true, false})
    for (const auto* mechanism : {"minimize", "offscreen", "hideApp"}) {
      desktop.workspace().keepWindowsOnDisplays(keeps);
      desktop.screenCapture().allow(keeps);
      desktop.accessibility().setTrusted(keeps);
      desktop.userDefaults().put("mechanism", mechanism);
      desktop.userDefaults().put("previewOnHover", keeps);
      desktop.userDefaults().put("useThumbnails", keeps);
      open();
      readForm();
    }
  window().selectPane("Shortcuts");
  desktop.symbolicHotKeys().reserve(1, Program::modifiers);
  for (const auto& [keyCode, modifiers] : {std::pair<std::uint16_t, std::uint64_t>{40, 0},
                                           {3, Program::modifiers},
                                           {1, Program::modifiers}}) {
    record("Restore all tabs", keyCode, modifiers, keyCode == 3 ? "f" : "s");
    readAlert();
  }
  // Windows that refuse, pictures that cannot be taken, and menus.
  const auto& texts = x11Texts;
  for (const auto& error :
       {PellowError::minimizeFailed(AXError::apiDisabled), PellowError::unminimizeFailed({}),
        PellowError::raiseFailed({}), PellowError::moveFailed({}),
        PellowError::moveRefused("Notes"), PellowError::accessibilityDenied(),
        PellowError::windowGone(), PellowError::hideFailed(texts), PellowError::noFocusedWindow(),
        PellowError::nothingPinned(), PellowError::screenRecordingDenied(texts),
        PellowError::captureFailed()})
    said.push_back(error.errorDescription());
  said.emplace_back(texts.screenRecordingCaveat);
  for (int error = 0; error > -20; --error)
    said.push_back(explanation(static_cast<AXError>(-25200 + error)));
  desktop.accessibility().setTrusted(true);
  desktop.userDefaults().put("mechanism", "offscreen");
  desktop.window("A").refusesToMove();
  desktop.application("Notes").activate();
  program->pressEverything();
  EXPECT_FALSE(desktop.alerts().showing().empty());
  readAlert();
  for (const auto& line : desktop.logged()) said.push_back(line.message);
  desktop.statusBar().openMenu();
  desktop.runUntilQuiet();
  for (const auto& line : desktop.menu().lines()) said.push_back(line);

  for (const auto& text : said)
    for (const auto* word :
         {"Mac", "macOS", "Dock", "iCloud", "System Settings", "Cmd", "⌘", "⌥", "⌃", "menu bar"})
      EXPECT_FALSE(text.contains(word)) << text;
  EXPECT_GT(said.size(), 300U);
}

}  // namespace
}  // namespace pellow
