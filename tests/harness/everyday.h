#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/eventually.h"
#include "tests/harness/pellow_program.h"
#include "tests/harness/test_client.h"

namespace pellow::desktop {

// A desktop on which applications open windows and the real program runs.
class Everyday : public testing::Test {
 protected:
  struct Guest {
    WindowID window = 0;
    PixelRect home;
  };

  explicit Everyday(DesktopOptions options = {}) : desktop(std::move(options)) {}

  void launch() { start({}); }
  // With these user defaults and no others; `changes` go over the environment of the desktop.
  void launch(const nlohmann::json& defaults, const Environment& changes = {}) {
    PellowProgram::writeDefaults(desktop, defaults);
    start(changes);
  }
  // By the signal; it must end cleanly.
  void end(int signal = SIGTERM) {
    pellow->process().send(signal);
    EXPECT_EQ(pellow->process().exitStatus(), 0) << pellow->process().standardError();
  }

  Guest guestOf(WindowID window) const { return {window, desktop.frame(window)}; }
  Guest open(TestClient& client, std::string_view title, PixelRect place) const {
    return guestOf(client.open(title, place));
  }

  // Control-Option-Command with the letter.
  void press(char letter) {
    desktop.type({key::control, key::alt, key::super, static_cast<KeySym>(letter)});
  }

  // Puts the window away by the key and waits for its tab.
  void putAway(const Guest& guest) {
    const int tabs = pellow->tabCount();
    ASSERT_TRUE(desktop.activate(guest.window));
    press('t');
    ASSERT_TRUE(hasTabs(tabs + 1)) << story(guest);
  }
  void putOffScreen(const Guest& guest) {
    ASSERT_NO_FATAL_FAILURE(putAway(guest));
    // metacity moves it once more when idle, and then it goes away again.
    ASSERT_TRUE(eventually([&] { return isAway(guest); })) << story(guest);
  }

  bool isAway(const Guest& guest) const {
    return desktop.isShown(guest.window) &&
           desktop.frame(guest.window).x == desktop.screen().width - 1;
  }
  bool isHome(const Guest& guest) const {
    return desktop.isShown(guest.window) && desktop.frame(guest.window) == guest.home;
  }
  bool isMinimized(const Guest& guest) const {
    return desktop.hasState(guest.window, "_NET_WM_STATE_HIDDEN") && !desktop.isShown(guest.window);
  }
  bool becomesActive(const Guest& guest) const {
    return eventually([&] { return desktop.activeWindow() == guest.window; });
  }
  bool hasTabs(int count) const {
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

  // Where it is, and what the program said.
  std::string story(const Guest& guest) const {
    std::ostringstream text;
    text << desktop.frame(guest.window) << ", home is " << guest.home << "\n"
         << pellow->process().standardError();
    return text.str();
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
  // An alert cannot be read from outside, but its sentences are in the log too.
  void awaitAlert() {
    ASSERT_TRUE(eventually([&] { return alert() != 0 && desktop.activeWindow() == alert(); }));
  }
  void awaitNoAlert() {
    ASSERT_TRUE(eventually([&] { return alert() == 0; }));
  }

  DesktopSession desktop;
  std::unique_ptr<PellowProgram> pellow;

 private:
  void start(const Environment& changes) {
    pellow = std::make_unique<PellowProgram>(desktop, changes);
    ASSERT_TRUE(pellow->isReady()) << pellow->process().standardError();
  }
};

}  // namespace pellow::desktop
