#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platforms/simulated/desktop.h"

// What the capture interface says of the desktop.

namespace pellow::simulated {
namespace {

using Lines = std::vector<std::string>;
TEST(SimulatedCapture, TheListHasWhatIsOnTheScreenFrontToBack) {
  simulated::Desktop desktop;
  const auto mail = desktop.launch("Mail", "com.example.mail");
  const auto inbox = mail.openWindow("Inbox", {100, 100, 800, 600});
  const auto notes = desktop.launch("Notes", "com.example.notes");
  const auto shopping = notes.openWindow("Shopping", {200, 200, 640, 480});
  const auto recipes = notes.openWindow("Recipes", {0, 100, 600, 400});
  const auto listed = [&] {
    Lines lines;
    const auto asked = desktop.screenCapture().shareableWindows([&](const auto& windows) {
      for (const auto& each : *windows)
        lines.push_back(each.title.value_or(each.owner ? "untitled" : "the desktop"));
    });
    EXPECT_TRUE(lines.empty()) << "answered before the main loop ran";
    desktop.runUntilQuiet();
    return lines;
  };
  EXPECT_EQ(listed(), (Lines{"Recipes", "Shopping", "Inbox", "the desktop"}));

  // Away by any of three means; a sliver on the screen is enough to stay.
  recipes.moveTo({1439, 100});
  shopping.minimize();
  mail.hide();
  EXPECT_EQ(listed(), (Lines{"Recipes", "the desktop"}));
  desktop.screens().plug(2, {1440, 0, 1280, 800});
  recipes.moveTo({2720, 100});
  mail.unhide();
  EXPECT_EQ(listed(), (Lines{"Inbox", "the desktop", "the desktop"}));
  recipes.moveTo({0, 100});

  // Capture may know another title than Accessibility, or none.
  inbox.isCapturedAs("Inbox (3)");
  recipes.isCapturedAs(std::nullopt);
  EXPECT_EQ(listed(), (Lines{"untitled", "Inbox (3)", "the desktop", "the desktop"}));
  EXPECT_EQ(inbox.title(), "Inbox");
}

}  // namespace
}  // namespace pellow::simulated
