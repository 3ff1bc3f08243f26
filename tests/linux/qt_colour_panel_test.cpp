#include "platforms/linux/qt/qt_colour_panel.h"

#include <QColorDialog>

#include "tests/harness/test_client.h"
#include "tests/linux/qt_desktop_test.h"

namespace pellow::desktop {
namespace {

TEST_F(QtDesktopTest, TheColourPanelShowsItsColourUntilItsNewestAskerHasEnough) {
  QtColourPanel panel;
  const auto dialog = [] {
    for (auto* const window : QApplication::topLevelWidgets())
      if (auto* const found = qobject_cast<QColorDialog*>(window)) return found;
    return static_cast<QColorDialog*>(nullptr);
  };
  const auto isShown = [&] { return shown("pellow-colours") != 0; };
  auto one = panel.show({1, 0, 0, 1}, [](Colour) {});
  ASSERT_TRUE(until([&] { return isInFront("pellow-colours"); }));
  EXPECT_EQ(dialog()->currentColor(), QColor(Qt::red));
  auto two = panel.show({0, 0, 1, 1}, [](Colour) {});
  one.cancel();
  work();
  EXPECT_TRUE(isShown()) << "the panel is the second's";

  // It stays above the windows of applications, and Escape closes it.
  TestClient client(desktop);
  client.open("In front", {0, 0, 1200, 700});
  EXPECT_EQ(desktop.stacking().back(), shown("pellow-colours"));
  ASSERT_TRUE(desktop.activate(shown("pellow-colours")));
  desktop.type({key::escape});
  ASSERT_TRUE(until([&] { return !isShown(); }));
  two = panel.show({0, 1, 0, 1}, [](Colour) {});
  ASSERT_TRUE(until(isShown));
  two.cancel();
  EXPECT_TRUE(until([&] { return !isShown(); }));
}

}  // namespace
}  // namespace pellow::desktop
