#include <thread>

#include "tests/harness/everyday.h"

// What the program does by itself when the user or another program does something to a window.

namespace pellow::desktop {
namespace {

class Triggers : public Everyday {
 protected:
  // The third button from the right in the title bar of openbox.
  void clickMinimizeButton(const Guest& guest) {
    desktop.click(guest.home.x + guest.home.width - 42, guest.home.y + 10);
  }

  // What happens before the program watches is not its business.
  void launchAndWatch(const nlohmann::json& defaults) {
    ASSERT_NO_FATAL_FAILURE(launch(defaults));
    ASSERT_TRUE(eventually([&] { return pellow->hasLogged("info Watching other applications"); }));
  }

  // For two seconds, events of an application that was put away are ignored.
  static void awaitEndOfEcho() { std::this_thread::sleep_for(std::chrono::milliseconds(2200)); }
};

TEST_F(Triggers, HoweverAWindowIsMinimizedItBecomesATab) {
  TestClient client(desktop);
  const auto other = open(client, "Other", {600, 300, 400, 300});
  const auto note = open(client, "Note", {100, 120, 400, 300});
  for (const std::string mechanism : {"offscreen", "minimize"}) {
    SCOPED_TRACE(mechanism);
    ASSERT_NO_FATAL_FAILURE(launchAndWatch({{"mechanism", mechanism}}));
    for (const std::string way : {"button", "program"}) {
      SCOPED_TRACE(way);
      ASSERT_TRUE(desktop.activate(note.window));
      if (way == "button") clickMinimizeButton(note);
      if (way == "program") desktop.iconify(note.window);
      ASSERT_TRUE(hasTabs(1)) << pellow->process().standardError();
      EXPECT_TRUE(eventually([&] { return isMinimized(note); })) << story(note);
      EXPECT_TRUE(pellow->hasLogged("default Window minimized elsewhere; pellowing it"));
      pellow->clickTab(0);
      expectHome({note, other});
      EXPECT_TRUE(becomesActive(note));
      expectAllIsOver();
    }
    end();
  }
}

TEST_F(Triggers, AnApplicationWithNothingToShowGetsItsLatestWindow) {
  TestClient editor(desktop, "Editor");
  TestClient viewer(desktop, "Viewer");
  const auto letter = open(editor, "Letter", {100, 120, 400, 300});
  const auto list = open(editor, "List", {200, 220, 400, 300});
  const auto picture = open(viewer, "Picture", {600, 300, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(letter));
  ASSERT_NO_FATAL_FAILURE(putOffScreen(list));
  ASSERT_TRUE(desktop.activate(picture.window));
  awaitEndOfEcho();

  // Activating any of its windows brings back the one that went last.
  ASSERT_TRUE(desktop.activate(letter.window));
  expectHome({list});
  EXPECT_TRUE(becomesActive(list));
  EXPECT_TRUE(hasTabs(1));
  EXPECT_TRUE(isAway(letter));

  press('r');
  expectHome({letter, list, picture});
  expectAllIsOver();
}

}  // namespace
}  // namespace pellow::desktop
