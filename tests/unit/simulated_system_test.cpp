#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platforms/simulated/simulated_desktop.h"
#include "platforms/simulated/simulated_panels.h"
#include "platforms/simulated/simulated_platform.h"

// The parts of the system around the program: status item, colour panel, login item, updates,
// permissions, new instances.

namespace pellow::simulated {
namespace {

using Lines = std::vector<std::string>;

constexpr Seconds day = 24 * 60 * 60;

class SimulatedSystemTest : public testing::Test {
 protected:
  UpdateDelegate delegate() {
    return {.willShowUpdate =
                [this](bool shown, const std::string& version) {
                  heard.push_back(fmt::format("{} {}", shown ? "shows" : "found", version));
                },
            .didReceiveUserAttention = [this] { heard.push_back("seen"); },
            .willShowModalAlert = [this] { heard.push_back("alert"); },
            .willRelaunchApplication = [this] { heard.push_back("relaunch"); }};
  }

  Lines heardAfter(const std::function<void()>& act) {
    heard.clear();
    act();
    EXPECT_EQ(heard, Lines{}) << "told outside of the main loop";
    desktop.runUntilQuiet();
    return heard;
  }

  SimulatedPlatform platform;
  SimulatedDesktop& desktop = platform.desktop();
  Lines heard;
};

TEST_F(SimulatedSystemTest, TheStatusItemAsksForItsMenuEachTime) {
  EXPECT_THROW(desktop.statusItem(), std::out_of_range);
  auto item = platform.statusBar().makeStatusItem();
  EXPECT_THROW(desktop.openStatusMenu(), std::out_of_range) << "it has no menu yet";
  item->setImage({.symbol = "sidebar.trailing", .isBadged = true});
  item->setTooltip("Pellow 2.1 is available");
  int openings = 0;
  item->setMenu([&] {
    const auto title = fmt::format("Opened {} times", ++openings);
    return Menu{{{.title = title, .onChosen = [this, title] { heard.push_back(title); }}}};
  });
  EXPECT_TRUE(desktop.statusItem().image()->isBadged);
  EXPECT_EQ(desktop.statusItem().tooltip(), "Pellow 2.1 is available");

  desktop.openStatusMenu();
  EXPECT_EQ(openings, 0);
  desktop.runUntilQuiet();
  desktop.click({700, 400});
  desktop.runUntilQuiet();
  EXPECT_FALSE(desktop.menuIsOpen());
  desktop.openStatusMenu();
  desktop.runUntilQuiet();
  EXPECT_EQ(desktop.menuLines(), Lines{"Opened 2 times"});
  EXPECT_EQ(heardAfter([&] { desktop.chooseFromMenu("Opened 2 times"); }), Lines{"Opened 2 times"});

  desktop.openStatusMenu();
  item.reset();
  desktop.runUntilQuiet();
  EXPECT_FALSE(desktop.menuIsOpen()) << "the item went before the click arrived";
}

TEST_F(SimulatedSystemTest, TheColourPanelListensToWhoeverShowedItLast) {
  const Colour red{1, 0, 0};
  const Colour green{0, 1, 0};
  const auto note = [this](std::string who) {
    return [this, who](Colour colour) { heard.push_back(who + " " + colour.text()); };
  };
  auto& panel = platform.colourPanel();
  EXPECT_THROW(desktop.pickColour(red), std::out_of_range);
  const auto first = panel.show(red, note("first"));
  EXPECT_EQ(desktop.shownColour(), red);
  EXPECT_EQ(heardAfter([&] { desktop.pickColour(green); }), Lines{"first #00FF00"});
  EXPECT_EQ(desktop.shownColour(), green);

  auto second = panel.show(red, note("second"));
  EXPECT_EQ(heardAfter([&] {
              desktop.pickColour(green);
              desktop.pickColour(red);
            }),
            (Lines{"second #00FF00", "second #FF0000"}));
  EXPECT_EQ(heardAfter([&] {
              desktop.pickColour(green);
              second.cancel();
            }),
            Lines{});
  EXPECT_TRUE(desktop.colourPanelIsOpen()) << "open, but nobody listens";

  second = panel.show(red, note("third"));
  EXPECT_EQ(heardAfter([&] {
              desktop.pickColour(green);
              desktop.closeColourPanel();
            }),
            Lines{"third #00FF00"});
  EXPECT_THROW(desktop.shownColour(), std::out_of_range);
}

TEST_F(SimulatedSystemTest, TheLoginItemOutlivesTheProcess) {
  auto& item = platform.loginItem();
  EXPECT_FALSE(item.isEnabled());
  desktop.failNextLoginItemChange({"Not today."});
  EXPECT_EQ(item.setEnabled(true).error(), SystemError{"Not today."});
  EXPECT_FALSE(desktop.startsAtLogin());
  EXPECT_TRUE(item.setEnabled(true));

  SimulatedPlatform next(desktop.snapshot());
  EXPECT_TRUE(next.loginItem().isEnabled());
  next.desktop().setStartsAtLogin(false);
  EXPECT_FALSE(next.loginItem().isEnabled()) << "the user changed it elsewhere";
  EXPECT_TRUE(item.isEnabled()) << "the other desktop is another desktop";
}

TEST_F(SimulatedSystemTest, UpdatesAreFoundByScheduleAndShownToTheUser) {
  auto& updates = platform.updateFramework();
  EXPECT_EQ(heardAfter([&] {
              updates.checkForUpdates();
              desktop.scheduledUpdateCheck();
            }),
            Lines{})
      << "not started";
  updates.start(delegate());
  EXPECT_EQ(updates.currentVersion(), "1.0");
  EXPECT_EQ(updates.sinceLastCheck(), std::nullopt);
  EXPECT_EQ(heardAfter([&] { updates.checkForUpdates(); }), Lines{"alert"});
  EXPECT_EQ(desktop.updateWindow(), "You have the newest version of Pellow.");
  EXPECT_THROW(desktop.installUpdate(), std::out_of_range);
  desktop.closeUpdateWindow();
  EXPECT_EQ(updates.sinceLastCheck(), 0);

  desktop.publishUpdate("2.1");
  desktop.run(day - 1);
  EXPECT_EQ(updates.sinceLastCheck(), day - 1);
  EXPECT_EQ(heard, Lines{"alert"});
  desktop.run(1);
  EXPECT_EQ(heard, (Lines{"alert", "found 2.1"}));
  EXPECT_EQ(desktop.updateWindow(), std::nullopt) << "a scheduled find is never shown";
  EXPECT_EQ(heardAfter([&] { desktop.scheduledUpdateCheck(); }), Lines{"found 2.1"});

  updates.setAutomaticallyChecks(false);
  EXPECT_EQ(heardAfter([&] { desktop.scheduledUpdateCheck(); }), Lines{});
  desktop.run(2 * day);
  EXPECT_EQ(heard, Lines{});

  EXPECT_EQ(heardAfter([&] { updates.checkForUpdates(); }), (Lines{"shows 2.1", "seen"}));
  EXPECT_EQ(desktop.updateWindow(), "Pellow 2.1 is available.");
  desktop.onTerminate([&] { heard.push_back("end"); });
  EXPECT_EQ(heardAfter([&] { desktop.installUpdate(); }), (Lines{"relaunch", "end"}));
  EXPECT_EQ(desktop.exitStatus(), 0);

  SimulatedPlatform next(desktop.snapshot());
  next.desktop().run(100);
  EXPECT_EQ(next.updateFramework().sinceLastCheck(), 100);
  EXPECT_FALSE(next.updateFramework().automaticallyChecks());
  EXPECT_EQ(next.updateFramework().currentVersion(), "2.1");
  next.desktop().setProgramVersion(std::nullopt);
  EXPECT_EQ(next.updateFramework().currentVersion(), std::nullopt);
}

TEST_F(SimulatedSystemTest, APermissionComesAndGoes) {
  const auto notes = desktop.launch("Notes");
  const auto list = notes.openWindow("Shopping", {100, 100, 800, 600});
  const auto other = notes.openWindow("Recipes", {100, 100, 800, 600});
  auto& accessibility = platform.accessibility();
  EXPECT_TRUE(accessibility.isProcessTrustedWithPrompt());
  EXPECT_EQ(desktop.trustPrompts(), 0);
  const auto observer = accessibility.observe(
      notes.element(), "AXWindowMiniaturized", [this](const AXElement& element) {
        heard.push_back(std::get<std::string>(*element.copyAttribute("AXTitle")));
      });
  EXPECT_EQ(heardAfter([&] { list.minimize(); }), Lines{"Shopping"});

  desktop.setTrusted(false);
  EXPECT_FALSE(accessibility.isProcessTrusted());
  EXPECT_FALSE(accessibility.isProcessTrustedWithPrompt());
  EXPECT_EQ(desktop.trustPrompts(), 1);
  EXPECT_EQ(list.element().copyAttribute("AXTitle").error(), AXError::apiDisabled);
  EXPECT_EQ(heardAfter([&] { other.minimize(); }), Lines{}) << "silent";

  desktop.setTrusted(true);
  EXPECT_EQ(heardAfter([&] {
              other.unminimize();
              other.minimize();
            }),
            Lines{"Recipes"})
      << "the observer of before hears again, of new things only";
}

TEST_F(SimulatedSystemTest, TheProgramOpensURLsAndStartsItselfAgain) {
  auto& workspace = platform.workspace();
  EXPECT_TRUE(workspace.open("x-example:privacy"));
  desktop.refuseURLs();
  EXPECT_FALSE(workspace.open("x-example:other"));
  EXPECT_EQ(desktop.openedURLs(), Lines{"x-example:privacy"});

  const auto launch = [&] {
    platform.process().launchNewInstance([this](const auto& result) {
      heard.push_back(result ? "launched" : result.error().sentence);
    });
  };
  desktop.failNextLaunch({"The bundle has moved."});
  EXPECT_EQ(heardAfter(launch), Lines{"The bundle has moved."});
  EXPECT_EQ(desktop.launchedInstances(), 0);
  EXPECT_EQ(heardAfter(launch), Lines{"launched"});
  EXPECT_EQ(desktop.launchedInstances(), 1);
}

TEST_F(SimulatedSystemTest, ThePointerGoesThroughAPanelThatIgnoresIt) {
  const auto makePanel = [&](std::string name) {
    auto panel = platform.panels().makePanel(name);
    View root{.key = "root", .frame = {0, 0, 200, 100}};
    root.actions.onClick = [this, name] { heard.push_back("click " + name); };
    root.actions.onHoverChanged = [this, name](bool inside) {
      heard.push_back((inside ? "enter " : "leave ") + name);
    };
    root.actions.drag.onBegan = [this, name] { heard.push_back("drag " + name); };
    root.actions.contextMenu = [name] { return Menu{{{.title = name}}}; };
    panel->setContent(root);
    panel->setFrame({200, 300, 200, 100});
    panel->orderFront();
    return panel;
  };
  const auto strip = makePanel("strip");
  const auto flight = makePanel("flight");
  const AppKitPoint there{300, 350};
  EXPECT_EQ(heardAfter([&] { desktop.click(there); }), (Lines{"enter flight", "click flight"}));
  flight->setIgnoresMouseEvents(true);
  EXPECT_TRUE(desktop.panel("flight").ignoresMouseEvents());
  desktop.runUntilQuiet();
  EXPECT_EQ(heard, (Lines{"enter flight", "click flight", "leave flight", "enter strip"}));
  EXPECT_EQ(heardAfter([&] { desktop.click(there); }), Lines{"click strip"});
  EXPECT_EQ(heardAfter([&] { desktop.drag(there, {320, 350}, 2); }), Lines{"drag strip"});
  desktop.secondaryClick(there);
  desktop.runUntilQuiet();
  EXPECT_EQ(desktop.menuLines(), Lines{"strip"});
  desktop.closeMenu();

  // Down to the windows, for clicks and for hit tests.
  const auto notes = desktop.launch("Notes");
  const auto low = notes.openWindow("Low", {100, 100, 800, 600});
  notes.openWindow("High", {950, 100, 300, 300});
  strip->orderOut();
  auto& accessibility = platform.accessibility();
  const auto hit = accessibility.elementAtPosition(accessibility.systemWide(), {300, 550});
  EXPECT_EQ(hit->copyAttribute("AXParent"), AXValue(low.element()));
  EXPECT_FALSE(low.isInFront());
  desktop.click(there);
  desktop.runUntilQuiet();
  EXPECT_TRUE(low.isInFront());
}

}  // namespace
}  // namespace pellow::simulated
