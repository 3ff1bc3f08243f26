#include "tests/desktop/everyday_test.h"

// Many windows at once, and the conversation about those that will not go.

namespace pellow::desktop {
namespace {

using nlohmann::json;

class Bulk : public Everyday {
 protected:
  // How long the strip in this half of the screen is; 0 without one.
  int stripLength(bool isLower) const {
    for (const auto strip : desktop.shownWindows("pellow", "pellow-strip")) {
      const auto place = desktop.content(strip);
      if ((place.y + place.height / 2 > desktop.screen().height / 2) == isLower)
        return place.height;
    }
    return 0;
  }

  static json zone(const std::string& id, const std::string& name, double y) {
    return {{"id", id}, {"name", name}, {"position", {1.0, y}}, {"snap", "right"}};
  }

  // A window so small that the sliver that stays on the screen is more than a twentieth of it.
  Guest openTiny(TestClient& client, int index) {
    const auto window =
        client.openUndecorated("Tiny " + std::to_string(index), {200 + 40 * index, 600, 12, 30});
    return {window, desktop.frame(window)};
  }

  // The sentences of the alert cannot be read from outside; they are in the log as well.
  void awaitAlert() {
    ASSERT_TRUE(eventually([&] { return alert() != 0 && desktop.activeWindow() == alert(); }));
  }
  // The button beside the one in the lower right corner.
  void clickMinimizeThem() {
    const auto place = desktop.content(alert());
    desktop.click(place.x + place.width - 165, place.y + place.height - 28);
  }
  void awaitNoAlert() {
    ASSERT_TRUE(eventually([&] { return alert() == 0; }));
  }

  TestClient editor{desktop, "Editor"};
  TestClient viewer{desktop, "Viewer"};
};

TEST_F(Bulk, EverythingGoesAndComes) {
  TestClient second(desktop, "Editor");
  const std::vector guests{
      open(editor, "Letter", {100, 120, 400, 300}), open(editor, "Letter", {150, 170, 400, 300}),
      open(second, "Letter", {200, 220, 400, 300}), open(viewer, "Picture", {600, 300, 400, 300})};
  const auto question = editor.openDialog("Question", {300, 500, 200, 100}, guests[0].window);
  const Guest dialog{question, desktop.frame(question)};
  ASSERT_NO_FATAL_FAILURE(launch());
  press('a');
  expectAway(guests);
  EXPECT_TRUE(hasTabs(4));
  EXPECT_EQ(pellow->journal().size(), 4);
  EXPECT_TRUE(isHome(dialog)) << "dialogs stay";
  press('a');
  EXPECT_TRUE(
      eventually([&] { return pellow->timesLogged("info Shortcut fired: pellowAll") == 2; }));
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  EXPECT_EQ(pellow->tabCount(), 4) << "what is away is not put away again";

  press('r');
  expectHome(guests);
  expectAllIsOver();

  // One that comes while the others go, many changes of mind, and the end in the middle of it.
  press('a');
  const auto late = open(viewer, "Late", {700, 100, 300, 200});
  for (const char key : {'r', 'a', 'e', 'r', 'a'}) press(key);
  ASSERT_TRUE(eventually([&] { return pellow->journal().size() > 1; }));
  pellow->process().send(SIGTERM);
  EXPECT_EQ(pellow->process().exitStatus(), 0);
  expectHome(guests);
  expectHome({late});
  EXPECT_TRUE(pellow->journal().empty());
}

TEST_F(Bulk, FocusModeLeavesExactlyTheFocusedWindow) {
  const auto letter = open(editor, "Letter", {100, 120, 400, 300});
  const auto list = open(editor, "List", {150, 170, 400, 300});
  const auto picture = open(viewer, "Picture", {600, 300, 400, 300});
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_TRUE(desktop.activate(list.window));
  press('e');
  expectAway({letter, picture});
  EXPECT_TRUE(hasTabs(2));
  EXPECT_TRUE(isHome(list));
  EXPECT_EQ(desktop.activeWindow(), list.window);
  press('e');
  ASSERT_TRUE(
      eventually([&] { return pellow->timesLogged("info Shortcut fired: focusMode") == 2; }));
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  EXPECT_EQ(pellow->tabCount(), 2);
  EXPECT_TRUE(isHome(list));
  press('r');
  expectHome({letter, list, picture});
  expectAllIsOver();
}

TEST_F(Bulk, PinnedApplicationsGoToTheirZone) {
  const std::string upper = "11111111-1111-1111-1111-111111111111";
  const std::string lower = "22222222-2222-2222-2222-222222222222";
  const json zones{zone(upper, "Tabs", 0.25), zone(lower, "Work", 0.75)};
  const json pins{{"Viewer", lower}};
  const auto letter = open(editor, "Letter", {100, 120, 400, 300});
  const auto picture = open(viewer, "Picture", {600, 300, 400, 300});
  const auto drawing = open(viewer, "Drawing", {650, 340, 400, 300});

  ASSERT_NO_FATAL_FAILURE(launch());
  press('p');
  EXPECT_TRUE(eventually([&] {
    return pellow->hasLogged(
        "error No apps are pinned yet. Right-click a tab and choose \"Always "
        "Pellow <app> Here\" to pin one.");
  }));
  ASSERT_NO_FATAL_FAILURE(awaitAlert());
  desktop.type({key::returnKey});
  ASSERT_NO_FATAL_FAILURE(awaitNoAlert());
  pellow->process().send(SIGTERM);
  EXPECT_EQ(pellow->process().exitStatus(), 0);

  ASSERT_NO_FATAL_FAILURE(
      launch({{"zones", {{"data", zones.dump()}}}, {"pinnedApps", {{"data", pins.dump()}}}}));
  ASSERT_TRUE(eventually([&] { return stripLength(false) > 0 && stripLength(true) > 0; }));
  const int emptyLength = stripLength(true);
  press('p');
  expectAway({picture, drawing});
  EXPECT_TRUE(eventually([&] { return stripLength(true) > emptyLength; }));
  EXPECT_EQ(stripLength(false), emptyLength);
  EXPECT_TRUE(isHome(letter));
  press('a');
  expectAway({letter, picture, drawing});
  EXPECT_TRUE(eventually([&] { return stripLength(false) != emptyLength; }));
  press('r');
  expectHome({letter, picture, drawing});
}

TEST_F(Bulk, WindowsThatWillNotSlideAreMinimizedInstead) {
  const auto letter = open(editor, "Letter", {100, 120, 400, 300});
  const auto first = openTiny(viewer, 0);
  ASSERT_NO_FATAL_FAILURE(launch());
  const std::string sentence = "error Viewer will not let its window be moved off-screen.";
  press('a');
  ASSERT_NO_FATAL_FAILURE(awaitAlert());
  EXPECT_EQ(pellow->timesLogged(sentence), 1);
  expectAway({letter});
  EXPECT_TRUE(isHome(first));
  EXPECT_TRUE(hasTabs(1));
  EXPECT_EQ(pellow->journal().size(), 1) << "nothing is left of what did not go";
  clickMinimizeThem();
  ASSERT_NO_FATAL_FAILURE(awaitNoAlert());
  EXPECT_TRUE(hasTabs(2));
  EXPECT_TRUE(desktop.hasState(first.window, "_NET_WM_STATE_HIDDEN"));
  press('r');
  expectHome({letter, first});
  expectAllIsOver();

  const auto second = openTiny(viewer, 1);
  press('a');
  ASSERT_NO_FATAL_FAILURE(awaitAlert());
  EXPECT_EQ(pellow->timesLogged(sentence), 3);
  desktop.type({key::escape});  // leaves them
  ASSERT_NO_FATAL_FAILURE(awaitNoAlert());
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  EXPECT_EQ(pellow->tabCount(), 1);
  expectHome({first, second});
}

}  // namespace
}  // namespace pellow::desktop
