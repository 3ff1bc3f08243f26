#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tests/desktop/eventually.h"
#include "tests/desktop/pellow_program.h"
#include "tests/desktop/test_client.h"

namespace pellow::desktop {

// A desktop with openbox, on which applications open windows and the real program runs.
class Everyday : public testing::Test {
 protected:
  struct Guest {
    WindowID window = 0;
    PixelRect home;
  };

  // `changes` go over the environment of the desktop.
  void launch(const nlohmann::json& defaults = nlohmann::json::object(),
              const Environment& changes = {}) {
    const auto file = PellowProgram::defaultsFile(desktop);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << defaults;
    pellow = std::make_unique<PellowProgram>(desktop, std::vector<std::string>{}, changes);
    ASSERT_TRUE(pellow->isReady()) << pellow->process().standardError();
  }

  Guest open(TestClient& client, std::string_view title, PixelRect place) {
    const auto window = client.open(title, place);
    return {window, desktop.frame(window)};
  }

  // Control-Option-Command with the letter.
  void press(char letter) {
    desktop.type({key::control, key::alt, key::super, static_cast<KeySym>(letter)});
  }

  bool isAway(const Guest& guest) const {
    return desktop.frame(guest.window).x == desktop.screen().width - 1;
  }
  bool isHome(const Guest& guest) const {
    return desktop.isShown(guest.window) && desktop.frame(guest.window) == guest.home;
  }
  bool hasTabs(int count) {
    return eventually([&] { return pellow->tabCount() == count; });
  }

  void expectAway(const std::vector<Guest>& guests) {
    for (const auto& guest : guests)
      EXPECT_TRUE(eventually([&] { return isAway(guest); })) << story(guest);
  }
  void expectHome(const std::vector<Guest>& guests) {
    for (const auto& guest : guests)
      EXPECT_TRUE(eventually([&] { return isHome(guest); })) << story(guest);
  }

  // No tab, no record, and the program alive and well.
  void expectAllIsOver() {
    EXPECT_TRUE(hasTabs(0)) << pellow->tabCount();
    EXPECT_TRUE(eventually([&] { return pellow->journal().empty(); })) << pellow->journal();
    EXPECT_TRUE(desktop.answersPing(pellow->strip()));
  }

  // The one alert that shows; 0 when there is none.
  WindowID alert() const {
    const auto alerts = desktop.shownWindows("pellow", "pellow-alert");
    return alerts.empty() ? 0 : alerts[0];
  }

  DesktopSession desktop;
  std::unique_ptr<PellowProgram> pellow;

 private:
  std::string story(const Guest& guest) const {
    std::ostringstream text;
    text << desktop.frame(guest.window) << ", home is " << guest.home << "\n"
         << pellow->process().standardError();
    return text.str();
  }
};

}  // namespace pellow::desktop
