#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platforms/simulated/simulated_desktop.h"
#include "platforms/simulated/simulated_panels.h"
#include "platforms/simulated/simulated_platform.h"

// The parts of the system around the program: status item, colour panel, updates, and panels that
// the pointer goes through.

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
  int openings = 0;
  item->setMenu([&] {
    const auto title = fmt::format("Opened {} times", ++openings);
    return Menu{{{.title = title, .onChosen = [this, title] { heard.push_back(title); }}}};
  });
  desktop.openStatusMenu();
  desktop.runUntilQuiet();
  desktop.click({700, 400});
  desktop.runUntilQuiet();
  EXPECT_FALSE(desktop.menuIsOpen());
  desktop.openStatusMenu();
  desktop.runUntilQuiet();
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
  const auto first = panel.show(red, note("first"));
  EXPECT_EQ(heardAfter([&] { desktop.pickColour(green); }), Lines{"first #00FF00"});
  EXPECT_EQ(desktop.shownColour(), green);

  auto second = panel.show(red, note("second"));
  EXPECT_EQ(heardAfter([&] { desktop.pickColour(red); }), Lines{"second #FF0000"});
  EXPECT_EQ(heardAfter([&] {
              desktop.pickColour(green);
              second.cancel();
            }),
            Lines{});
  EXPECT_TRUE(desktop.colourPanelIsOpen()) << "open, but nobody listens";
}

TEST_F(SimulatedSystemTest, UpdatesAreFoundByScheduleAndShownToTheUser) {
  auto& updates = platform.updateFramework();
  EXPECT_EQ(heardAfter([&] { updates.checkForUpdates(); }), Lines{}) << "not started";
  updates.start(delegate());
  EXPECT_EQ(updates.sinceLastCheck(), std::nullopt);
  EXPECT_EQ(heardAfter([&] { updates.checkForUpdates(); }), Lines{"alert"});
  EXPECT_EQ(desktop.updateWindow(), "You have the newest version of Pellow.");
  desktop.closeUpdateWindow();
  EXPECT_EQ(updates.sinceLastCheck(), 0);

  desktop.publishUpdate("2.1");
  desktop.run(day - 1);
  EXPECT_EQ(heard, Lines{"alert"});
  desktop.run(1);
  EXPECT_EQ(heard, (Lines{"alert", "found 2.1"}));
  EXPECT_EQ(desktop.updateWindow(), std::nullopt) << "a scheduled find is never shown";
  EXPECT_EQ(heardAfter([&] { desktop.scheduledUpdateCheck(); }), Lines{"found 2.1"});

  updates.setAutomaticallyChecks(false);
  heard.clear();
  desktop.run(2 * day);
  EXPECT_EQ(heard, Lines{});

  EXPECT_EQ(heardAfter([&] { updates.checkForUpdates(); }), (Lines{"shows 2.1", "seen"}));
  desktop.onTerminate([&] { heard.push_back("end"); });
  EXPECT_EQ(heardAfter([&] { desktop.installUpdate(); }), (Lines{"relaunch", "end"}));
  EXPECT_EQ(desktop.exitStatus(), 0);

  SimulatedPlatform next(desktop.snapshot());
  next.desktop().run(100);
  EXPECT_EQ(next.updateFramework().sinceLastCheck(), 100);
  EXPECT_FALSE(next.updateFramework().automaticallyChecks());
  EXPECT_EQ(next.updateFramework().currentVersion(), "2.1");
}

TEST_F(SimulatedSystemTest, ThePointerGoesThroughAPanelThatIgnoresIt) {
  const auto makePanel = [&](std::string name) {
    auto panel = platform.panels().makePanel(name);
    View root{.key = "root", .frame = {0, 0, 200, 100}};
    root.actions.onClick = [this, name] { heard.push_back("click " + name); };
    panel->setContent(root);
    panel->setFrame({200, 300, 200, 100});
    panel->orderFront();
    return panel;
  };
  const auto low = desktop.launch("Notes").openWindow("Low", {100, 100, 800, 600});
  const auto strip = makePanel("strip");
  const auto flight = makePanel("flight");
  const AppKitPoint there{300, 350};
  const auto click = [&] { desktop.click(there); };
  EXPECT_EQ(heardAfter(click), Lines{"click flight"});
  flight->setIgnoresMouseEvents(true);
  EXPECT_EQ(heardAfter(click), Lines{"click strip"});
  // Down to the windows.
  strip->orderOut();
  auto& accessibility = platform.accessibility();
  const auto hit = accessibility.elementAtPosition(accessibility.systemWide(), {300, 550});
  EXPECT_EQ(hit->copyAttribute("AXParent"), AXValue(low.element()));
}

}  // namespace
}  // namespace pellow::simulated
