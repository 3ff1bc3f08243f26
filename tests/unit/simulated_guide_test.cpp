#include <gtest/gtest.h>

#include "platform/event_monitors.h"
#include "program.h"

// The story that docs/simulated-desktop.md begins with.

namespace pellow {

TEST(SimulatedGuide, ASlowWindowGoesAndComesBack) {
  simulated::Desktop desktop;
  const auto notes = desktop.launch("Notes", "com.example.notes");
  const auto list = notes.openWindow("Shopping", {100, 100, 800, 600}).answersAfter(0.2);

  Program program(desktop);
  desktop.keyboard().press(17, modifier::control | modifier::option | modifier::command);
  desktop.runUntilQuiet();
  EXPECT_LT(list.shareOnDisplays(), 0.05);

  program.clickTab("Shopping");
  EXPECT_EQ(list.frame(), QuartzRect(100, 100, 800, 600));
}

}  // namespace pellow
