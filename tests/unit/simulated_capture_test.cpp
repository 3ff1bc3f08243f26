#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "platforms/simulated/simulated_desktop.h"
#include "platforms/simulated/simulated_image.h"
#include "platforms/simulated/simulated_platform.h"

// What the capture interface says of the desktop, and when it says no.

namespace pellow::simulated {
namespace {

using Lines = std::vector<std::string>;
using Windows = std::vector<ShareableWindow>;

class SimulatedCaptureTest : public testing::Test {
 protected:
  // The answer, a run later; none when there was no answer.
  std::optional<std::expected<Windows, SystemError>> list() {
    std::optional<std::expected<Windows, SystemError>> answer;
    const auto asked = capture.shareableWindows([&](const auto& windows) { answer = windows; });
    desktop.runUntilQuiet();
    return answer;
  }

  Lines listed() {
    Lines lines;
    for (const auto& each : **list())
      lines.push_back(each.title.value_or(each.owner ? "untitled" : "the desktop"));
    return lines;
  }

  ShareableWindow shared(std::string_view title) {
    const auto windows = **list();
    return *std::ranges::find_if(windows, [&](const auto& each) { return each.title == title; });
  }

  // A picture of the window, after `meanwhile`; the sentence of the error if there is one.
  std::expected<WindowPicture, std::string> picture(
      const ShareableWindow& window, const std::function<void()>& meanwhile = [] {}) {
    std::expected<WindowPicture, std::string> result = std::unexpected("no answer");
    const auto asked =
        capture.captureImage(window, 80, 60, [&](const std::expected<Image, SystemError>& image) {
          if (!image) result = std::unexpected(image.error().sentence);
          if (image) result = windowPicture(*image);
        });
    EXPECT_FALSE(result) << "answered before the main loop ran";
    meanwhile();
    desktop.runUntilQuiet();
    return result;
  }

  SimulatedPlatform platform;
  SimulatedDesktop& desktop = platform.desktop();
  ScreenCapture& capture = platform.screenCapture();
  SimulatedApplication mail = desktop.launch("Mail", "com.example.mail");
  SimulatedWindow inbox = mail.openWindow("Inbox", {100, 100, 800, 600});
  SimulatedApplication notes = desktop.launch("Notes", "com.example.notes");
  SimulatedWindow shopping = notes.openWindow("Shopping", {200, 200, 640, 480});
  SimulatedWindow recipes = notes.openWindow("Recipes", {0, 100, 600, 400});
};

TEST_F(SimulatedCaptureTest, TheListHasWhatIsOnTheScreenFrontToBack) {
  EXPECT_EQ(listed(), (Lines{"Recipes", "Shopping", "Inbox", "the desktop"}));

  // Away by any of three means; a sliver on the screen is enough to stay.
  recipes.moveTo({1439, 100});
  shopping.minimize();
  mail.hide();
  EXPECT_EQ(listed(), (Lines{"Recipes", "the desktop"}));
  recipes.moveTo({1440, 100});
  mail.unhide();
  EXPECT_EQ(listed(), (Lines{"Inbox", "the desktop"}));

  desktop.plug(2, {1440, 0, 1280, 800});
  EXPECT_EQ(listed(), (Lines{"Recipes", "Inbox", "the desktop", "the desktop"}));
  EXPECT_EQ((*list())->back().frame, QuartzRect(1440, 100, 1280, 800));

  // Capture may know another title than Accessibility, or none.
  inbox.isCapturedAs("Inbox (3)");
  recipes.isCapturedAs(std::nullopt);
  EXPECT_EQ(listed(), (Lines{"untitled", "Inbox (3)", "the desktop", "the desktop"}));
  EXPECT_EQ(inbox.title(), "Inbox");
}

TEST_F(SimulatedCaptureTest, APictureShowsTheWindowAtTheMomentItIsTaken) {
  desktop.capturesAfter(0.3);
  const auto wanted = shared("Shopping");
  const auto begun = desktop.now();
  const auto taken = picture(wanted, [&] {
    desktop.after(0.2, [&] {
      shopping.rename("Groceries");
      shopping.moveTo({300, 200});
    });
    desktop.after(0.4, [&] { shopping.moveTo({0, 0}); });
  });
  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->title, "Groceries");
  EXPECT_EQ(taken->frame, QuartzRect(300, 200, 640, 480));
  EXPECT_DOUBLE_EQ(taken->takenAt, begun + 0.3);

  const auto gone = std::string("The window is not on the screen.");
  EXPECT_EQ(picture(wanted, [&] { shopping.minimize(); }).error(), gone);
  shopping.unminimize();
  EXPECT_EQ(picture(wanted, [&] { desktop.after(0.1, [&] { notes.kill(); }); }).error(), gone);
}

TEST_F(SimulatedCaptureTest, ThePermissionCountsAtTheMomentToo) {
  const auto wanted = shared("Inbox");
  desktop.allowCapture(false);
  EXPECT_TRUE(picture(wanted, [&] { desktop.allowCapture(true); })) << "granted meanwhile";
  EXPECT_FALSE(picture(wanted, [&] { desktop.allowCapture(false); })) << "withdrawn meanwhile";
}

TEST_F(SimulatedCaptureTest, SomeAnswersNeverCome) {
  int answers = 0;
  capture.shareableWindows([&](const auto&) { ++answers; }).cancel();
  desktop.capturesAfter(never);
  EXPECT_FALSE(list().has_value());
  EXPECT_EQ(answers, 0);

  // The one who asks may stop listening in the middle of the answer.
  desktop.capturesAfter(0);
  Subscription asked;
  asked = capture.shareableWindows([&](const auto&) {
    asked.cancel();
    ++answers;
  });
  desktop.runUntilQuiet();
  EXPECT_EQ(answers, 1);
}

}  // namespace
}  // namespace pellow::simulated
