#include <gtest/gtest.h>

#include <csignal>

#include "tests/desktop/eventually.h"
#include "tests/desktop/pellow_program.h"
#include "tests/desktop/test_client.h"

namespace pellow::desktop {
namespace {

TEST(Relaunch, ANewInstanceTakesOverWhenTheOldOneHasBroughtEverythingBack) {
  DesktopSession desktop;
  PellowProgram old(desktop);
  ASSERT_TRUE(old.isReady());
  TestClient client(desktop);
  const auto window = client.open("Notes", {300, 150, 500, 400});
  const auto frame = desktop.frame(window);
  const auto pellow = [&] { desktop.type({key::control, key::alt, key::super, 't'}); };
  pellow();
  ASSERT_TRUE(eventually([&] { return old.tabCount() == 1; }));

  // As the old one starts it; it waits, and changes nothing.
  PellowProgram next(desktop, {}, {{"PELLOW_RELAUNCHED", "1"}});
  PellowProgram stranger(desktop);
  EXPECT_EQ(stranger.process().exitStatus(), 1);
  EXPECT_TRUE(next.process().isRunning());
  EXPECT_EQ(old.tabCount(), 1);
  EXPECT_EQ(old.journal().size(), 1u);

  old.process().send(SIGTERM);
  EXPECT_EQ(old.process().exitStatus(), 0);
  EXPECT_EQ(desktop.frame(window), frame);
  ASSERT_TRUE(next.isReady());
  EXPECT_TRUE(next.journal().empty());
  EXPECT_EQ(next.tabCount(), 0);
  ASSERT_TRUE(desktop.activate(window));
  pellow();
  EXPECT_TRUE(eventually([&] { return next.tabCount() == 1; }));
  next.process().send(SIGTERM);
  EXPECT_EQ(next.process().exitStatus(), 0);
  EXPECT_EQ(desktop.frame(window), frame);
}

}  // namespace
}  // namespace pellow::desktop
