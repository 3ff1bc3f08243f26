#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platforms/simulated/desktop.h"

// The parts of the system around the program: status item and updates.

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

  simulated::Desktop desktop;
  Lines heard;
};

TEST_F(SimulatedSystemTest, TheStatusItemAsksForItsMenuEachTime) {
  EXPECT_THROW(desktop.statusBar().item(), std::out_of_range);
  auto item = desktop.statusBar().makeStatusItem();
  EXPECT_THROW(desktop.statusBar().openMenu(), std::out_of_range) << "it has no menu yet";
  int openings = 0;
  item->setMenu([&] {
    const auto title = fmt::format("Opened {} times", ++openings);
    return Menu{{{.title = title, .onChosen = [this, title] { heard.push_back(title); }}}};
  });
  for (int opening = 0; opening < 2; ++opening) {
    desktop.statusBar().openMenu();
    desktop.runUntilQuiet();
  }
  EXPECT_EQ(heardAfter([&] { desktop.menu().choose({"Opened 2 times"}); }),
            Lines{"Opened 2 times"});

  desktop.statusBar().openMenu();
  item.reset();
  desktop.runUntilQuiet();
  EXPECT_FALSE(desktop.menu().isOpen()) << "the item went before the click arrived";
}

TEST_F(SimulatedSystemTest, UpdatesAreFoundByScheduleAndShownToTheUser) {
  auto& updates = desktop.updateFramework();
  EXPECT_EQ(heardAfter([&] { updates.checkForUpdates(); }), Lines{}) << "not started";
  updates.start(delegate());
  EXPECT_EQ(heardAfter([&] { updates.checkForUpdates(); }), Lines{"alert"});
  desktop.updateFramework().closeWindow();

  desktop.updateFramework().publish("2.1");
  desktop.run(day - 1);
  EXPECT_EQ(heard, Lines{"alert"});
  desktop.run(1);
  EXPECT_EQ(heard, (Lines{"alert", "found 2.1"}));
  EXPECT_EQ(desktop.updateFramework().windowText(), std::nullopt)
      << "a scheduled find is never shown";
  EXPECT_EQ(heardAfter([&] { desktop.updateFramework().checkBySchedule(); }), Lines{"found 2.1"});

  EXPECT_EQ(heardAfter([&] { updates.checkForUpdates(); }), (Lines{"shows 2.1", "seen"}));
  updates.setAutomaticallyChecks(false);
  heard.clear();
  desktop.run(2 * day);
  EXPECT_EQ(heard, Lines{});
  desktop.process().onTerminate([&] { heard.push_back("end"); });
  EXPECT_EQ(heardAfter([&] { desktop.updateFramework().install(); }), (Lines{"relaunch", "end"}));

  simulated::Desktop next(desktop.snapshot());
  EXPECT_FALSE(next.updateFramework().automaticallyChecks());
  EXPECT_EQ(next.updateFramework().currentVersion(), "2.1");
}

}  // namespace
}  // namespace pellow::simulated
