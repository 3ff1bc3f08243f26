#include "platforms/linux/qt/qt_system_colours.h"

#include <QPalette>

#include "tests/linux/qt_desktop_test.h"

namespace pellow::desktop {
namespace {

class QtSystemColoursTest : public QtDesktopTest {};

TEST_F(QtSystemColoursTest, TheyFollowTheDesktop) {
  const QtSystemColours colours;
  QApplication::setPalette(QPalette(Qt::white));
  EXPECT_EQ(colours.resolve(SystemColour::label), (Colour{0, 0, 0}));
  const auto onLight = colours.resolve(SystemColour::red);
  QApplication::setPalette(QPalette(Qt::black));
  EXPECT_EQ(colours.resolve(SystemColour::label), (Colour{1, 1, 1}));
  EXPECT_NE(colours.resolve(SystemColour::red), onLight);
}

}  // namespace
}  // namespace pellow::desktop
