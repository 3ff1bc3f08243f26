#include <fstream>

#include "tests/harness/everyday.h"

// The settings window, by a real pointer and a real keyboard.

namespace pellow::desktop {
namespace {

class SettingsWindow : public Everyday {
 protected:
  WindowID settings() const {
    const auto windows = desktop.shownWindows("pellow", "pellow-settings");
    return windows.empty() ? 0 : windows[0];
  }
  bool hasKeyboard() const {
    return eventually([&] { return settings() != 0 && desktop.activeWindow() == settings(); });
  }
  // With the button that has the keyboard.
  void startRecording() {
    const auto look = [&] { return desktop.picture(desktop.content(settings())).pixels; };
    const auto before = look();
    desktop.type({' '});
    EXPECT_TRUE(comesToRest(look, std::chrono::milliseconds(300)));
    EXPECT_NE(look(), before);
  }
  nlohmann::json stored(const std::string& key) const {
    const auto defaults =
        nlohmann::json::parse(std::ifstream(PellowProgram::defaultsFile(desktop)), nullptr, false);
    return defaults.is_object() && defaults.contains(key) ? defaults[key] : nlohmann::json();
  }
};

TEST_F(SettingsWindow, OpensAtTheFirstStartAndKeepsWhatIsSetInIt) {
  TestClient client(desktop);
  const auto guest = open(client, "Guest", {20, 20, 300, 200});
  ASSERT_NO_FATAL_FAILURE(launch({{"firstMinuteShown", false}}));
  ASSERT_TRUE(hasKeyboard());

  // The knob of the first slider on the second pane goes where it is clicked.
  const auto place = desktop.content(settings());
  desktop.click(place.x + 130, place.y + 28);
  for (int y = 104; y < 125 && stored("tabSize").is_null(); y += 5) {
    desktop.click(place.x + 280, place.y + y);
    (void)eventually([&] { return !stored("tabSize").is_null(); }, std::chrono::seconds(2));
  }
  ASSERT_TRUE(stored("tabSize").is_number());
  EXPECT_GT(stored("tabSize"), 50);

  desktop.type({key::tab});
  desktop.type({' '});
  EXPECT_TRUE(eventually([&] { return stored("showTitles") == true; }));
  desktop.type({key::control, key::tab});
  desktop.type({key::control, key::tab});

  // The first button of the shortcuts: the press of another one is refused and fires nothing.
  startRecording();
  press('r');
  ASSERT_NO_FATAL_FAILURE(awaitAlert());
  ASSERT_NO_FATAL_FAILURE(answerAlert());
  ASSERT_TRUE(hasKeyboard()) << "which the alert has given back";
  startRecording();
  desktop.type({key::alt, 'k'});
  EXPECT_TRUE(eventually([&] { return stored("shortcuts").dump().contains("pellowFrontmost"); }));
  EXPECT_FALSE(pellow->hasLogged("info Shortcut fired: restoreAll"));
  EXPECT_FALSE(pellow->hasLogged("info Shortcut fired: pellowFrontmost"));
  desktop.type({key::control, 'w'});
  ASSERT_TRUE(eventually([&] { return settings() == 0; }));
  ASSERT_TRUE(desktop.activate(guest.window));
  desktop.type({key::alt, 'k'});
  EXPECT_TRUE(
      eventually([&] { return pellow->hasLogged("info Shortcut fired: pellowFrontmost"); }));
  end();

  EXPECT_EQ(stored("firstMinuteShown"), true);
  ASSERT_NO_FATAL_FAILURE(launch());
  EXPECT_EQ(settings(), 0U);
}

}  // namespace
}  // namespace pellow::desktop
