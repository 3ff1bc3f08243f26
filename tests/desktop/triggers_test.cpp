#include <thread>

#include "tests/desktop/everyday_test.h"

// What the program does by itself when the user or another program does something to a window.

namespace pellow::desktop {
namespace {

class Triggers : public Everyday {
 protected:
  // The third button from the right in the title bar of openbox.
  void clickMinimizeButton(const Guest& guest) {
    desktop.click(guest.home.x + guest.home.width - 42, guest.home.y + 10);
  }

  // Binds Super-M to the minimizing of the window that has the keys.
  void bindMinimizeKey() {
    std::ifstream system("/etc/xdg/openbox/rc.xml");
    std::string settings(std::istreambuf_iterator<char>(system), {});
    const std::string keyboard = "<keyboard>";
    const auto place = settings.find(keyboard);
    ASSERT_NE(place, std::string::npos);
    settings.insert(place + keyboard.size(),
                    R"(<keybind key="W-m"><action name="Iconify"/></keybind>)");
    const auto file = desktop.configHome() / "openbox" / "rc.xml";
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << settings;
    desktop.restartWindowManager();
  }

  bool isMinimized(const Guest& guest) const {
    return desktop.hasState(guest.window, "_NET_WM_STATE_HIDDEN");
  }

  // Events of an application that was put away count for nothing for two seconds.
  static void awaitEndOfEcho() { std::this_thread::sleep_for(std::chrono::milliseconds(2200)); }

  void putAway(const Guest& guest) {
    const int tabs = pellow->tabCount();
    ASSERT_TRUE(desktop.activate(guest.window));
    press('t');
    ASSERT_TRUE(hasTabs(tabs + 1));
    ASSERT_TRUE(isAway(guest));
  }
};

TEST_F(Triggers, HoweverAWindowIsMinimizedItBecomesATab) {
  ASSERT_NO_FATAL_FAILURE(bindMinimizeKey());
  TestClient client(desktop);
  const auto other = open(client, "Other", {600, 300, 400, 300});
  const auto note = open(client, "Note", {100, 120, 400, 300});
  for (const std::string mechanism : {"offscreen", "minimize"}) {
    SCOPED_TRACE(mechanism);
    ASSERT_NO_FATAL_FAILURE(launch({{"mechanism", mechanism}}));
    for (const std::string way : {"button", "key", "program"}) {
      SCOPED_TRACE(way);
      ASSERT_TRUE(desktop.activate(note.window));
      if (way == "button") clickMinimizeButton(note);
      if (way == "key") desktop.type({key::super, 'm'});
      if (way == "program") desktop.iconify(note.window);
      ASSERT_TRUE(hasTabs(1)) << pellow->process().standardError();
      EXPECT_TRUE(isMinimized(note));
      EXPECT_TRUE(pellow->hasLogged("default Window minimized elsewhere; pellowing it"));
      pellow->clickTab(0);
      expectHome({note, other});
      EXPECT_TRUE(eventually([&] { return desktop.activeWindow() == note.window; }));
      expectAllIsOver();
    }
    pellow->process().send(SIGTERM);
    EXPECT_EQ(pellow->process().exitStatus(), 0);
  }
}

TEST_F(Triggers, AMinimizedWindowIsLeftAloneWhereTheUserWantsItSo) {
  TestClient client(desktop);
  const auto note = open(client, "Note", {100, 120, 400, 300});
  const auto other = open(client, "Other", {600, 300, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch({{"pellowOnMinimize", false}}));
  clickMinimizeButton(note);
  ASSERT_TRUE(eventually([&] { return isMinimized(note); }));
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  ASSERT_NO_FATAL_FAILURE(putAway(other));
  EXPECT_EQ(pellow->tabCount(), 1);
  EXPECT_FALSE(pellow->hasLogged("default Window minimized elsewhere; pellowing it"));
  pellow->process().send(SIGTERM);
  EXPECT_EQ(pellow->process().exitStatus(), 0);
  expectHome({other});
  EXPECT_TRUE(isMinimized(note));
}

TEST_F(Triggers, AnApplicationWithNothingToShowGetsItsLatestWindow) {
  TestClient editor(desktop, "Editor");
  TestClient viewer(desktop, "Viewer");
  const auto letter = open(editor, "Letter", {100, 120, 400, 300});
  const auto list = open(editor, "List", {200, 220, 400, 300});
  const auto picture = open(viewer, "Picture", {600, 300, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putAway(letter));
  ASSERT_NO_FATAL_FAILURE(putAway(list));
  ASSERT_TRUE(desktop.activate(picture.window));
  ASSERT_TRUE(desktop.activate(list.window));
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  EXPECT_EQ(pellow->tabCount(), 2) << "that was too early for anything but an echo";
  ASSERT_TRUE(desktop.activate(picture.window));
  awaitEndOfEcho();

  // Any of its windows stands for the application; the one that went last comes.
  ASSERT_TRUE(desktop.activate(letter.window));
  expectHome({list});
  EXPECT_TRUE(eventually([&] { return desktop.activeWindow() == list.window; }));
  EXPECT_TRUE(hasTabs(1));
  EXPECT_TRUE(isAway(letter));

  // With a window to show, it is left alone until a window is chosen that is away.
  ASSERT_TRUE(desktop.activate(picture.window));
  awaitEndOfEcho();
  ASSERT_TRUE(desktop.activate(list.window));
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  EXPECT_EQ(pellow->tabCount(), 1);
  EXPECT_TRUE(isAway(letter));
  ASSERT_TRUE(desktop.activate(letter.window));
  expectHome({letter, list, picture});
  EXPECT_TRUE(pellow->hasLogged("default Pellowed window was chosen from its app; restoring it"));
  expectAllIsOver();
}

TEST_F(Triggers, NothingComesBackByItselfWhereTheUserWantsItSo) {
  TestClient editor(desktop, "Editor");
  TestClient viewer(desktop, "Viewer");
  const auto letter = open(editor, "Letter", {100, 120, 400, 300});
  const auto list = open(editor, "List", {200, 220, 400, 300});
  const auto picture = open(viewer, "Picture", {600, 300, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch({{"restoreOnActivation", false}}));
  for (const auto& guest : {letter, picture}) ASSERT_NO_FATAL_FAILURE(putAway(guest));
  awaitEndOfEcho();
  for (const auto& guest : {picture, list, letter}) ASSERT_TRUE(desktop.activate(guest.window));
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  ASSERT_NO_FATAL_FAILURE(putAway(list));
  EXPECT_EQ(pellow->tabCount(), 3);
  press('r');
  expectHome({letter, list, picture});
  expectAllIsOver();
}

}  // namespace
}  // namespace pellow::desktop
