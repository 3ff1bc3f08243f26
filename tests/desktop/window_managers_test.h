#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/desktop/eventually.h"
#include "tests/desktop/pellow_program.h"
#include "tests/desktop/test_client.h"
#include "tests/desktop/window_manager_choice.h"

// What every window manager must let Pellow do. The one that PELLOW_WINDOW_MANAGER names, openbox
// by default, takes part; scripts/window-managers goes through all of them, and each story of
// WindowManagers is a column of its table.

namespace pellow::desktop {

class WindowManagers : public testing::Test {
 protected:
  void launch() {
    pellow = std::make_unique<PellowProgram>(desktop);
    ASSERT_TRUE(pellow->isReady()) << pellow->process().standardError();
  }

  void launchWith(const std::string& mechanism) {
    const auto file = PellowProgram::defaultsFile(desktop);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << R"({"mechanism": ")" << mechanism << R"("})";
    launch();
  }

  void end() {
    pellow->process().send(SIGTERM);
    EXPECT_EQ(pellow->process().exitStatus(), 0) << pellow->process().standardError();
  }

  void pressRestoreAll() { desktop.type({key::control, key::alt, key::super, 'r'}); }

  // Puts the window away by the key and waits until its tab stands.
  void putAway(WindowID window) {
    const int tabs = pellow->tabCount();
    ASSERT_TRUE(desktop.activate(window));
    desktop.type({key::control, key::alt, key::super, 't'});
    ASSERT_TRUE(eventually([&] { return pellow->tabCount() == tabs + 1; }))
        << desktop.frame(window) << "\n"
        << pellow->process().standardError();
  }

  void putOffScreen(WindowID window) {
    ASSERT_NO_FATAL_FAILURE(putAway(window));
    ASSERT_TRUE(isAway(window)) << desktop.frame(window);
  }

  bool isAway(WindowID window) const {
    return desktop.isShown(window) && desktop.frame(window).x == desktop.screen().width - 1;
  }

  void expectBack(WindowID window, PixelRect home) {
    EXPECT_TRUE(eventually([&] {
      return desktop.isShown(window) && desktop.frame(window) == home;
    })) << desktop.frame(window)
        << " is not " << home << "\n"
        << pellow->process().standardError();
  }

  void expectAllIsOver() {
    EXPECT_TRUE(eventually([&] { return pellow->tabCount() == 0 && pellow->journal().empty(); }));
    EXPECT_TRUE(desktop.answersPing(pellow->strip()));
  }

  // Off the screen and back, by click and by key.
  void expectRoundTrips(WindowID window) {
    const auto home = desktop.frame(window);
    for (const bool byClick : {true, false}) {
      ASSERT_NO_FATAL_FAILURE(putOffScreen(window));
      const auto away = desktop.frame(window);
      EXPECT_EQ(std::pair(away.width, away.height), std::pair(home.width, home.height));
      byClick ? pellow->clickTab(0) : pressRestoreAll();
      expectBack(window, home);
      expectAllIsOver();
    }
  }

  // A window in a state in which it does not move: it leaves the state, and takes it up again.
  void expectRoundTrip(WindowID window, const std::vector<std::string>& states) {
    const auto hasAll = [&](bool has) {
      return std::ranges::all_of(
          states, [&](const auto& state) { return desktop.hasState(window, state) == has; });
    };
    const auto expanded = desktop.frame(window);
    ASSERT_TRUE(hasAll(true));
    ASSERT_NO_FATAL_FAILURE(putOffScreen(window));
    EXPECT_TRUE(hasAll(false));
    pellow->clickTab(0);
    expectBack(window, expanded);
    EXPECT_TRUE(eventually([&] { return hasAll(true); }));
    expectAllIsOver();
  }

  // The state is there, and the frame that comes with it.
  void awaitState(WindowID window, std::string_view state) {
    ASSERT_TRUE(eventually([&] { return desktop.hasState(window, state); }));
    // When it shows another window, it has finished with this one.
    client.destroy(client.open("Next", {400, 300, 200, 100}));
    ASSERT_TRUE(desktop.activate(window));
    EXPECT_GE(desktop.frame(window).height, desktop.workArea().height);
  }

  // What the table must say of this story besides that it went well.
  static void note(const std::string& sentence) {
    const auto& test = *testing::UnitTest::GetInstance()->current_test_info();
    std::cout << "note: " << test.name() << ": " << sentence << std::endl;
  }

  Manager manager = chosenManager();
  DesktopSession desktop{{.windowManager = manager.command}};
  TestClient client{desktop};
  std::unique_ptr<PellowProgram> pellow;
};

}  // namespace pellow::desktop
