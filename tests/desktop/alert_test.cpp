#include <gtest/gtest.h>

#include "tests/desktop/eventually.h"
#include "tests/desktop/pellow_program.h"

namespace pellow::desktop {
namespace {

// An alert of the program itself has the keyboard until it is closed, and a little longer in the
// program's own view of things.
TEST(Alerts, AKeyPressedRightAfterAnAlertHasClosedIsNotLost) {
  DesktopSession desktop;
  PellowProgram pellow(desktop);
  ASSERT_TRUE(pellow.isReady()) << pellow.process().standardError();
  const auto alert = [&] {
    const auto alerts = desktop.shownWindows("pellow", "pellow-alert");
    return alerts.empty() ? 0 : alerts[0];
  };
  for (int round = 1; round <= 10; ++round) {
    // With no window to put away, the key brings an alert.
    desktop.type({key::control, key::alt, key::super, 't'});
    ASSERT_TRUE(eventually([&] {
      return pellow.timesLogged("error No focused window to pellow.") == round;
    })) << "round "
        << round;
    ASSERT_TRUE(eventually([&] { return alert() != 0 && desktop.activeWindow() == alert(); }));
    desktop.type({key::returnKey});
    ASSERT_TRUE(eventually([&] { return alert() == 0; }));
  }
}

}  // namespace
}  // namespace pellow::desktop
