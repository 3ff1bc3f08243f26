#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "platforms/simulated/form_window.h"
#include "tests/unit/program.h"

// The status item, its menu, and what its items do.

namespace pellow {
namespace {

using Lines = std::vector<std::string>;

class MenuBarStory : public Story {
 protected:
  Lines openMenu() {
    desktop.statusBar().openMenu();
    desktop.runUntilQuiet();
    return desktop.menu().lines();
  }
  void choose(const std::string& title) {
    openMenu();
    desktop.menu().choose({title});
    desktop.runUntilQuiet();
  }
  bool offersCheck() { return std::ranges::count(openMenu(), "Check for Updates…") == 1; }
  const simulated::StatusItem& item() { return desktop.statusBar().item(); }
  void findUpdate(const std::string& version) {
    desktop.updateFramework().publish(version);
    desktop.updateFramework().checkBySchedule();
    desktop.runUntilQuiet();
  }

  // The end of every menu without an update.
  const Lines rest{"—",
                   "✓ Keep Tabs Above Other Windows",
                   "—",
                   "Bring Back Hidden Windows…",
                   "—",
                   "Settings…",
                   "Check for Updates…",
                   "—",
                   "Relaunch Pellow",
                   "Quit Pellow"};
};

Lines operator+(Lines a, const Lines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST_F(MenuBarStory, OffersEveryActionWithItsKey) {
  desktop.launch("Notes").openWindow("Shopping", {100, 120, 800, 600});
  launch();
  EXPECT_EQ(item().image(), (StatusImage{"sidebar.trailing", false, "Pellow"}));
  EXPECT_EQ(item().tooltip(), "");
  const Lines actions{"Pellow Frontmost Window", "Focus: Pellow Everything Else",
                      "Pellow All Pinned Apps", "Pellow Everything"};
  EXPECT_EQ(openMenu(), actions + Lines{"Restore All Tabs (disabled)"} + rest);
  std::map<std::string, KeyEquivalent> expected;
  for (const auto& [title, letter] : {std::pair{"Pellow Frontmost Window", "t"},
                                      {"Focus: Pellow Everything Else", "e"},
                                      {"Pellow All Pinned Apps", "p"},
                                      {"Pellow Everything", "a"},
                                      {"Restore All Tabs", "r"},
                                      {"Keep Tabs Above Other Windows", "f"}})
    expected[title] = {letter, Program::modifiers};
  expected["Settings…"] = {",", modifier::command};
  expected["Quit Pellow"] = {"q", modifier::command};
  for (const auto& title : expected)
    EXPECT_EQ(desktop.menu().item({title.first}).key, title.second) << title.first;
  EXPECT_EQ(desktop.menu().item({"Keep Tabs Above Other Windows"}).tooltip,
            "Turn this off and tabs sit at desktop level, so they appear when the desktop does and "
            "never cover an app.");
  EXPECT_EQ(desktop.menu().item({"Bring Back Hidden Windows…"}).tooltip,
            "Finds any window you can no longer see and puts it back on screen, whether Pellow hid "
            "it or not.");

  choose("Pellow Frontmost Window");
  EXPECT_EQ(program->tabs(), Lines{"Shopping"});
  EXPECT_EQ(openMenu(), actions + Lines{"Restore All Tabs"} + rest);
  choose("Restore All Tabs");
  EXPECT_EQ(program->tabs(), Lines{});
  choose("Keep Tabs Above Other Windows");
  EXPECT_EQ(openMenu().at(6), "Keep Tabs Above Other Windows");
  EXPECT_EQ(desktop.panels().panel("pellow-strip").level(), PanelLevel::desktopIcons);
  choose("Pellow Everything");
  EXPECT_EQ(program->tabs(), Lines{"Shopping"});
  choose("Settings…");
  EXPECT_TRUE(desktop.formWindows().window("pellow-settings").isVisible());
}

TEST_F(MenuBarStory, ShowsTheBindingsOfTheUser) {
  desktop.userDefaults().put(
      "shortcuts",
      DefaultsData{R"({"focusMode":{"keyCode":14,"characters":"e","modifiers":1572864}})"});
  launch();
  openMenu();
  EXPECT_EQ(desktop.menu().item({"Focus: Pellow Everything Else"}).key,
            (KeyEquivalent{"e", modifier::option | modifier::command}));
  EXPECT_EQ(desktop.menu().item({"Pellow Everything"}).key,
            (KeyEquivalent{"a", Program::modifiers}));
}

TEST_F(MenuBarStory, TellsWhatNeedsAttention) {
  desktop.accessibility().setTrusted(false);
  desktop.screenCapture().allow(false);
  launch();
  desktop.alerts().choose("Later");
  EXPECT_EQ(openMenu().at(0), "Accessibility permission required");
  EXPECT_EQ(openMenu().at(2), "Pellow Frontmost Window") << "pictures are off anyway";

  desktop.userDefaults().put("useThumbnails", true);
  findUpdate("2.1");
  EXPECT_EQ(item().image(), (StatusImage{"sidebar.trailing", true, "Pellow"}));
  EXPECT_EQ(item().tooltip(), "Pellow 2.1 is available");
  EXPECT_TRUE(desktop.hasLogged("Update available: 2.1"));
  EXPECT_EQ(desktop.updateFramework().windowText(), std::nullopt);
  auto lines = openMenu();
  EXPECT_FALSE(offersCheck());
  lines.resize(7);
  EXPECT_EQ(lines, (Lines{"Accessibility permission required", "—",
                          "Screen Recording is off, so tabs show app icons", "—",
                          "Update to Pellow 2.1…", "—", "Pellow Frontmost Window"}));
  const auto symbol = [&](std::string_view title) {
    return std::get<MenuSymbol>(desktop.menu().item({title}).image).name;
  };
  EXPECT_EQ(symbol(lines[0]), "exclamationmark.triangle.fill");
  EXPECT_EQ(symbol(lines[2]), "exclamationmark.triangle");
  EXPECT_EQ(symbol(lines[4]), "arrow.down.circle.fill");
  EXPECT_EQ(desktop.menu().item({lines[2]}).tooltip,
            "macOS drops this permission when an app moves or is re-signed. Re-grant it and "
            "relaunch Pellow.");
  choose(lines[0]);
  choose(lines[2]);
  const std::string pane = "x-apple.systempreferences:com.apple.preference.security?Privacy_";
  EXPECT_EQ(desktop.workspace().openedURLs(),
            (Lines{pane + "Accessibility", pane + "ScreenCapture"}));

  choose(lines[4]);
  EXPECT_EQ(desktop.updateFramework().windowText(), "Pellow 2.1 is available.");
  EXPECT_EQ(item().image(), (StatusImage{"sidebar.trailing", false, "Pellow"})) << "it was seen";
  EXPECT_EQ(item().tooltip(), "");
  EXPECT_TRUE(offersCheck());
}

TEST_F(MenuBarStory, SpeaksOfNothingThatTheDesktopLacks) {
  desktop.setTexts(x11Texts);
  desktop.userDefaults().put("useThumbnails", true);
  desktop.screenCapture().allow(false);
  launch();
  desktop.alerts().choose("Later");
  EXPECT_EQ(openMenu().at(0), "This display gives no pictures, so tabs show app icons");
  for (const auto* const title : {"Settings…", "Quit Pellow"})
    EXPECT_EQ(desktop.menu().item({title}).key.characters, "") << title;
}

TEST_F(MenuBarStory, ComesWithTheMenuOfAZoneWhereThereIsNoPlaceForIt) {
  launch();
  const auto zoneMenu = [&] {
    desktop.pointer().secondaryClick(desktop.panels().panel("pellow-strip").centre(""));
    desktop.runUntilQuiet();
    return desktop.menu().lines();
  };
  const auto own = zoneMenu();
  EXPECT_EQ(own.size(), 5);
  const auto menu = openMenu();
  desktop.statusBar().setHasPlace(false);
  EXPECT_EQ(zoneMenu(), own + Lines{"—"} + menu);
  desktop.menu().choose({"Quit Pellow"});
  desktop.runUntilQuiet();
  EXPECT_FALSE(desktop.process().isRunning());
}

TEST_F(MenuBarStory, BringsBackWindowsThatNobodyCanSee) {
  const auto notes = desktop.launch("Notes");
  launch();
  const auto rescue = [&] {
    choose("Bring Back Hidden Windows…");
    return program->answerAlert();
  };
  EXPECT_EQ(rescue(), "No hidden windows found\nEvery window is already somewhere you can see it.");
  const std::string place = "\nThey were moved onto the main display.";
  for (const auto& [count, message] :
       {std::pair{1, "Brought back 1 window"}, {3, "Brought back 3 windows"}}) {
    for (int number = 0; number < count; ++number)
      notes.openWindow("Lost", {5000.0 + number, 5000, 400, 300});
    EXPECT_EQ(rescue(), message + place);
    for (const auto& window : desktop.windows()) EXPECT_GT(window.shareOnDisplays(), 0.99);
  }
  // A window that stands in the journal, too.
  desktop.launch("Mail", "com.example.mail").openWindow("Inbox", {0, 30, 500, 500});
  program->pressPellow();
  EXPECT_EQ(program->journalAfterCrash().size(), 1);
  EXPECT_EQ(rescue(), "Brought back 1 window" + place);
  EXPECT_TRUE(program->journalAfterCrash().empty());
}

TEST_F(MenuBarStory, QuitsAndRelaunchesWithEveryWindowBack) {
  for (const auto* const title : {"Quit Pellow", "Relaunch Pellow"}) {
    simulated::Desktop other;
    const auto mail = other.launch("Mail", "com.example.mail");
    mail.openWindow("Inbox", {0, 30, 500, 500});
    const auto list = other.launch("Notes").openWindow("Shopping", {100, 120, 800, 600});
    Program ending(other);
    ending.pressEverything();
    EXPECT_EQ(ending.tabs().size(), 2);
    mail.hangs();
    for (int twice = 0; twice < 2; ++twice) {
      other.statusBar().openMenu();
      other.run(0.01);
      if (!other.menu().isOpen()) break;
      other.menu().choose({title});
    }
    other.runUntilQuiet();
    EXPECT_EQ(other.process().exitStatus(), 0) << title;
    EXPECT_EQ(list.frame(), QuartzRect(100, 120, 800, 600)) << title;
    EXPECT_EQ(other.process().launchedInstances(), title == std::string("Relaunch Pellow"));
    EXPECT_EQ(ending.journalAfterCrash().size(), 1) << "of the one that does not answer";
  }
}

TEST_F(MenuBarStory, AnUpdateReplacesTheProgramOnceEveryWindowIsBack) {
  const auto list = desktop.launch("Notes").openWindow("Shopping", {100, 120, 800, 600});
  launch();
  program->pressPellow();
  desktop.updateFramework().publish("2.1");
  choose("Check for Updates…");
  EXPECT_FALSE(desktop.hasLogged("Update available: 2.1")) << "the user sees it";
  bool wasBack = false;
  desktop.process().onTerminate([&] { wasBack = list.frame() == QuartzRect(100, 120, 800, 600); });
  desktop.updateFramework().install();
  desktop.runUntilQuiet();
  EXPECT_TRUE(wasBack);
  EXPECT_TRUE(desktop.hasLogged("Sparkle is about to relaunch Pellow; restoring pellowed windows"));
}

}  // namespace
}  // namespace pellow
