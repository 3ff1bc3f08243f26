#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
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
    // What it is found by in a picture of the screen; none if it is of many colours.
    std::optional<std::uint32_t> colour = TestClient::colourOf(window);
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

  Guest guestOf(WindowID window) const { return {.window = window, .home = desktop.frame(window)}; }
  Guest open(TestClient& client, std::string_view title, PixelRect place) const {
    return guestOf(client.open(title, place));
  }

  // Control-Option-Command with the letter.
  void press(char letter) {
    desktop.type({key::control, key::alt, key::super, static_cast<KeySym>(letter)});
  }

  // Puts the window away by the key, and waits for its tab and until nobody sees it.
  void putAway(const Guest& guest) {
    const int tabs = pellow->tabCount();
    ASSERT_TRUE(desktop.activate(guest.window));
    press('t');
    ASSERT_TRUE(hasTabs(tabs + 1)) << story(guest);
    EXPECT_TRUE(eventually([&] { return isOutOfSight(guest); })) << story(guest);
    EXPECT_TRUE(desktop.standsStill());
    keepPicture();
  }
  void putOffScreen(const Guest& guest) {
    ASSERT_NO_FATAL_FAILURE(putAway(guest));
    // metacity moves it once more when idle, and then it goes away again.
    ASSERT_TRUE(eventually([&] { return isAway(guest); })) << story(guest);
    if (!minimizesInstead) return;
    EXPECT_EQ(alert(), 0);
    EXPECT_EQ(pellow->timesLogged("default This desktop keeps windows on its displays; they are "
                                  "minimized instead"),
              1);
    noteOnce("minimized instead.");
  }

  // As the mechanism "offscreen" puts it away.
  bool isAway(const Guest& guest) const {
    if (minimizesInstead) return isMinimized(guest);
    return desktop.isShown(guest.window) &&
           desktop.frame(guest.window).x == desktop.screen().width - 1 && isOutOfSight(guest);
  }
  bool isHome(const Guest& guest) const {
    return desktop.isShown(guest.window) && desktop.frame(guest.window) == guest.home &&
           isSeenAt(guest.home, guest);
  }
  // To the server, some minimized windows are on the screen: mutter only paints them no more.
  bool isMinimized(const Guest& guest) const {
    return desktop.hasState(guest.window, "_NET_WM_STATE_HIDDEN") && isOutOfSight(guest);
  }
  // In front of others, too: nothing covers it but a strip.
  bool becomesActive(const Guest& guest) const {
    const auto content = desktop.content(guest.window);
    // Both may have something around the window: decoration or shadow.
    const int size =
        std::min(content.width, guest.home.width) * std::min(content.height, guest.home.height);
    return eventually([&] {
      return desktop.activeWindow() == guest.window &&
             (!guest.colour || 10 * pixelsOf(guest, desktop.screen()) > 9 * size);
    });
  }

  // The sides of the screen may show slivers.
  bool isOutOfSight(const Guest& guest, int sliver = 1) const {
    auto part = desktop.screen();
    part.x += sliver;
    part.width -= 2 * sliver;
    return pixelsOf(guest, part) == 0;
  }
  // There, and nowhere else.
  bool isSeenAt(PixelRect place, const Guest& guest) const {
    const int seen = pixelsOf(guest, place);
    return !guest.colour || (seen > 0 && seen == pixelsOf(guest, desktop.screen()));
  }
  int pixelsOf(const Guest& guest, PixelRect part) const {
    return guest.colour ? desktop.picture(part).count(*guest.colour) : 0;
  }
  bool hasTabs(int count) const {
    return eventually([&] { return pellow->tabCount() == count; });
  }

  void expectAway(const std::vector<Guest>& guests) {
    for (const auto& guest : guests)
      EXPECT_TRUE(eventually([&] { return isAway(guest); })) << story(guest);
    EXPECT_TRUE(desktop.standsStill());
    keepPicture();
  }
  void expectHome(const std::vector<Guest>& guests) {
    for (const auto& guest : guests)
      EXPECT_TRUE(eventually([&] { return isHome(guest); })) << story(guest);
    EXPECT_TRUE(desktop.standsStill());
  }

  // Where it is, and what the program said.
  std::string story(const Guest& guest) const {
    std::ostringstream text;
    text << desktop.frame(guest.window) << ", home is " << guest.home << ", "
         << pixelsOf(guest, desktop.screen()) << " pixels in sight\n"
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
  // At first it takes no key.
  void answerAlert(KeySym answer = key::returnKey) {
    ASSERT_TRUE(eventually([&] {
      if (alert() != 0) desktop.type({answer});
      return alert() == 0;
    }));
  }

  // What the table of window managers must say of this story besides that it went well.
  void noteOnce(const std::string& sentence) {
    if (std::ranges::find(notes, sentence) != notes.end()) return;
    notes.push_back(sentence);
    std::cout << "note: " << storyName() << ": " << sentence << std::endl;
  }

  // For people, in the folder PELLOW_PICTURES: the screen at the latest look of the story, or where
  // it failed.
  void keepPicture() const {
    if (const auto* folder = std::getenv("PELLOW_PICTURES"))
      desktop.picture(desktop.screen())
          .write(std::filesystem::path(folder) /
                 (chosenManagerName() + '-' + storyName() + ".ppm"));
  }
  void TearDown() override {
    if (HasFailure()) keepPicture();
  }

  DesktopSession desktop;
  std::unique_ptr<PellowProgram> pellow;
  const bool minimizesInstead = chosenManager().keepsWindowsOnDisplays;

 private:
  // Of the column of the table.
  static std::string storyName() {
    const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
    return name.substr(name.rfind('/') + 1);
  }

  void start(const Environment& changes) {
    pellow = std::make_unique<PellowProgram>(desktop, changes);
    ASSERT_TRUE(pellow->isReady()) << pellow->process().standardError();
  }

  std::vector<std::string> notes;
};

}  // namespace pellow::desktop
