#include "tests/harness/everyday.h"

// Many windows at once, and the alert about those that will not go.

namespace pellow::desktop {
namespace {

class Bulk : public Everyday {
 protected:
  // A window so small that the sliver left on the screen is more than a twentieth of it.
  Guest openTiny(TestClient& client, int index) {
    return guestOf(
        client.openUndecorated("Tiny " + std::to_string(index), {200 + 40 * index, 600, 12, 30}));
  }

  // The button beside the one in the lower right corner.
  void clickMinimizeThem() {
    const auto place = desktop.content(alert());
    desktop.click(place.x + place.width - 165, place.y + place.height - 28);
  }
  TestClient editor{desktop, "Editor"};
  TestClient viewer{desktop, "Viewer"};
};

TEST_F(Bulk, EverythingGoesAndComes) {
  TestClient second(desktop, "Editor");
  const std::vector guests{
      open(editor, "Letter", {100, 120, 400, 300}), open(editor, "Letter", {150, 170, 400, 300}),
      open(second, "Letter", {200, 220, 400, 300}), open(viewer, "Picture", {600, 300, 400, 300})};
  const auto dialog =
      guestOf(editor.openDialog("Question", {300, 500, 200, 100}, guests[0].window));
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
  end();
  expectHome(guests);
  expectHome({late});
  EXPECT_TRUE(pellow->journal().empty());
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
  ASSERT_NO_FATAL_FAILURE(answerAlert(key::escape));  // leaves them
  ASSERT_TRUE(desktop.answersPing(pellow->strip()));
  EXPECT_EQ(pellow->tabCount(), 1);
  expectHome({first, second});
}

}  // namespace
}  // namespace pellow::desktop
