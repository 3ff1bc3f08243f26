#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "capture/flight_animator.h"
#include "capture/window_capture.h"
#include "platforms/simulated/named_image.h"
#include "tests/unit/program.h"

// Pictures of windows: taken in time, kept for a while, flown to the tab and back.

namespace pellow {
namespace {

using simulated::windowPicture;

constexpr QuartzRect home{100, 120, 800, 600};
constexpr auto noSnapshot = "No snapshot for this window, using its icon: ";

class PictureStory : public Story {
 protected:
  PictureStory() { desktop.userDefaults().put("useThumbnails", true); }

  simulated::Application notes = desktop.launch("Notes", "com.example.notes");
  simulated::Window list = notes.openWindow("Shopping", home);
  simulated::Application mail = desktop.launch("Mail", "com.example.mail");
  simulated::Window inbox = mail.openWindow("Inbox", {0, 30, 500, 500});

  const std::optional<Image>& snapshot() {
    return program->controller().store().tabs()[0].snapshot;
  }
};

TEST_F(PictureStory, AWindowIsPhotographedBeforeItGoes) {
  launch();
  for (const auto* mechanism : {"offscreen", "minimize", "hideApp"}) {
    SCOPED_TRACE(mechanism);
    desktop.userDefaults().put("mechanism", mechanism);
    notes.activate();
    program->pressPellow();
    ASSERT_TRUE(snapshot());
    EXPECT_EQ(windowPicture(*snapshot()).title, "Shopping");
    EXPECT_EQ(windowPicture(*snapshot()).frame, home);
    EXPECT_EQ(snapshot()->size(), home.size);
    program->pressRestoreAll();
  }

  desktop.screenCapture().failNext({"The camera is broken."});
  program->pressPellow();
  EXPECT_FALSE(snapshot());
  EXPECT_TRUE(desktop.hasLogged(std::string(noSnapshot) + "The camera is broken."));
  program->pressRestoreAll();

  // No window waits for a camera for ever.
  desktop.screenCapture().answersAfter(simulated::never);
  program->pressPellow();
  ASSERT_EQ(program->tabs().size(), 1);
  EXPECT_FALSE(snapshot());
  EXPECT_TRUE(
      desktop.hasLogged(std::string(noSnapshot) + "Screen capture did not answer in time."));
  desktop.screenCapture().answersAfter(0);
  program->pressRestoreAll();

  desktop.userDefaults().put("useThumbnails", false);
  program->pressPellow();
  EXPECT_FALSE(snapshot());
  EXPECT_TRUE(desktop.alerts().showing().empty());
}

TEST_F(PictureStory, AWindowThatIsMovedBeforeItsTurnComesBackToItsNewPlace) {
  desktop.screenCapture().answersAfter(0.2);
  launch();
  desktop.after(0.1, [&] { inbox.moveTo({600, 200}); });
  program->pressEverything();
  ASSERT_EQ(program->tabs().size(), 2);
  program->pressRestoreAll();
  EXPECT_EQ(inbox.frame(), QuartzRect(600, 200, 500, 500));
}

TEST_F(PictureStory, AMissingPermissionIsToldOnce) {
  desktop.screenCapture().allow(false);
  launch();
  EXPECT_EQ(desktop.screenCapture().requests(), 1);
  const auto asked = program->answerAlert("Open System Settings");
  EXPECT_TRUE(
      asked.starts_with("Pellow needs Screen Recording permission\nYou have real window "
                        "images switched on, so Pellow photographs each window"));
  EXPECT_EQ(desktop.workspace().openedURLs(),
            std::vector<std::string>{
                "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture"});

  program->pressPellow();
  EXPECT_EQ(program->tabs().size(), 1) << "with its icon";
  EXPECT_TRUE(
      program->answerAlert().starts_with("Pellow could not complete that action\nWindow thumbnails "
                                         "need Screen Recording permission."));
  notes.activate();
  program->pressPellow();
  EXPECT_EQ(program->tabs().size(), 2);
  EXPECT_EQ(program->answerAlert(), "");
}

TEST_F(PictureStory, AMinimizedWindowHasThePictureTakenAhead) {
  launch();
  notes.activate();
  desktop.runUntilQuiet();
  desktop.run(29);
  list.minimize();
  desktop.runUntilQuiet();
  ASSERT_TRUE(snapshot()) << "taken when Notes became active";
  EXPECT_EQ(windowPicture(*snapshot()).title, "Shopping");
  const auto taken = windowPicture(*snapshot()).takenAt;
  EXPECT_LT(taken, 1);
  program->pressRestoreAll();

  // At most one every 4 s, and none older than 30 s is used.
  mail.activate();
  desktop.run(2);
  const auto activated = desktop.now();
  notes.activate();
  desktop.run(3);
  mail.activate();
  notes.activate();
  desktop.run(28);
  list.minimize();
  desktop.runUntilQuiet();
  EXPECT_FALSE(snapshot()) << "taken at " << activated << ", not 3 s later";
}

TEST_F(PictureStory, SixteenPicturesAreKept) {
  launch();
  std::vector<simulated::Window> windows;
  for (int number = 0; number < 17; ++number) {
    const auto name = fmt::format("App {}", number);
    windows.push_back(desktop.launch(name, name).openWindow(name, home));
    desktop.application(name).activate();
    notes.activate();
    desktop.application(name).activate();
    desktop.runUntilQuiet();
  }
  windows.front().minimize();
  windows.back().minimize();
  desktop.runUntilQuiet();
  const auto& tabs = program->controller().store().tabs();
  ASSERT_EQ(tabs.size(), 2);
  EXPECT_FALSE(tabs[0].snapshot) << "the oldest gave way";
  EXPECT_TRUE(tabs[1].snapshot);
}

TEST_F(PictureStory, ThePictureFliesToTheTabAndBack) {
  desktop.userDefaults().put("animationDuration", 0.4);
  launch();
  notes.activate();
  desktop.keyboard().press(17, Program::modifiers);
  desktop.run(0.2);
  const auto& out = desktop.panels().panel("pellow-flight");
  EXPECT_TRUE(out.ignoresMouseEvents());
  EXPECT_EQ(out.shadow(), WindowShadow::no);
  EXPECT_LT(out.opacityNow(), 1);
  EXPECT_EQ(out.frame().midX(), program->tab("Shopping").x);
  desktop.runUntilQuiet();
  EXPECT_TRUE(desktop.panels().visible("pellow-flight").empty());

  desktop.keyboard().press(15, Program::modifiers);
  desktop.run(0.3);
  // Quartz (100, 120) is 900 - 120 - 600 above the bottom.
  EXPECT_EQ(desktop.panels().panel("pellow-flight").frame(), AppKitRect(100, 180, 800, 600));
  desktop.runUntilQuiet();
  EXPECT_TRUE(desktop.panels().visible("pellow-flight").empty());

  const auto expectNoFlight = [&] {
    desktop.keyboard().press(17, Program::modifiers);
    desktop.run(0.2);
    EXPECT_EQ(program->tabs().size(), 1);
    EXPECT_TRUE(desktop.panels().visible("pellow-flight").empty());
    program->pressRestoreAll();
  };
  desktop.userDefaults().put("animateFlight", false);
  expectNoFlight();
  desktop.userDefaults().put("animateFlight", true);
  desktop.userDefaults().put("mechanism", "minimize");
  expectNoFlight();
  desktop.userDefaults().put("mechanism", "offscreen");
  desktop.screens().lock();
  program->perform(ShortcutAction::pellowFrontmost);
  desktop.run(0.2);
  EXPECT_EQ(program->tabs().size(), 1);
  EXPECT_TRUE(desktop.panels().visible("pellow-flight").empty());
  program->pressRestoreAll();
  EXPECT_EQ(program->tabs().size(), 1) << "the keys are somebody else's";
  program->perform(ShortcutAction::restoreAll);
  desktop.run(0.2);
  EXPECT_TRUE(program->tabs().empty());
  EXPECT_TRUE(desktop.panels().visible("pellow-flight").empty());
  desktop.screens().lock(false);

  // Quitting does not wait for a flight.
  desktop.userDefaults().put("mechanism", "offscreen");
  desktop.keyboard().press(17, Program::modifiers);
  desktop.run(0.1);
  desktop.process().receive(TerminationSignal::terminate);
  desktop.runUntilQuiet();
  EXPECT_EQ(desktop.process().exitStatus(), 0);
  EXPECT_EQ(list.frame(), home);
}

TEST(WindowCaptureTest, FindsTheWindowByTitleAndFrame) {
  const auto window = [](const char* title, QuartzRect frame) {
    return ShareableWindow{
        .object = std::make_shared<ShareableWindow::Object>(), .title = title, .frame = frame};
  };
  EXPECT_EQ(WindowCapture::score(window("Shopping", home), "Shopping", home), 9);
  EXPECT_EQ(WindowCapture::score(window("Shopping", {102, 118, 802, 598}), "Shopping", home), 9);
  EXPECT_EQ(WindowCapture::score(window("Renamed", home), "Shopping", home), 6);
  EXPECT_EQ(WindowCapture::score(window("Shopping", {103, 120, 800, 600}), "Shopping", home), 5);
  EXPECT_EQ(WindowCapture::score(window("", home), "", home), 6);

  const std::vector windows{window("Shopping", {0, 0, 10, 10}), window("x", {0, 0, 800, 600})};
  EXPECT_EQ(WindowCapture::bestMatch(windows, "Shopping", home), std::nullopt);
  const std::vector siblings{window("Shopping", {500, 120, 800, 600}), window("Shopping", home),
                             window("Shopping", home)};
  EXPECT_EQ(WindowCapture::bestMatch(siblings, "Shopping", home), siblings[1]);
}

TEST(FlightAnimatorTest, LandsInTheMiddleWithItsProportions) {
  EXPECT_EQ(FlightAnimator::landing({0, 0, 1600, 900}, {100, 100, 34, 34}),
            AppKitRect(100, 100 + (34 - 19.125) / 2, 34, 19.125));
  EXPECT_EQ(FlightAnimator::landing({0, 0, 0, 900}, {100, 100, 34, 34}),
            AppKitRect(100, 100, 34, 34));

  simulated::Desktop desktop;
  NotificationCenter notifications;
  const Preferences preferences(desktop.userDefaults(), notifications);
  FlightAnimator flights(desktop.panels(), preferences, desktop.queues().main());
  const auto icon = Image(std::make_shared<simulated::NamedImage>("icon", Size{32, 32}));
  const auto startsAt = [&](AppKitRect window, AppKitRect tab) -> std::optional<AppKitRect> {
    int landed = 0;
    flights.flyOut(icon, FlightAnimator::Subject::icon, window, tab, [&] { ++landed; });
    std::optional<AppKitRect> start;
    if (!desktop.panels().visible("pellow-flight").empty())
      start = desktop.panels().panel("pellow-flight").frameNow();
    desktop.runUntilQuiet();
    EXPECT_EQ(landed, 1);
    return start;
  };
  EXPECT_EQ(startsAt({0, 0, 1200, 800}, {0, 0, 34, 34}), AppKitRect(510, 310, 180, 180));
  EXPECT_EQ(startsAt({0, 0, 300, 200}, {0, 0, 34, 34}), AppKitRect(90, 40, 120, 120));
  EXPECT_EQ(startsAt({0, 0, 300, 200}, {0, 0, 0, 0}), std::nullopt);

  // Of many flights the first starts at once and a few more once no new ones come, each in its own
  // frame; all of them land.
  const auto flying = [&] { return desktop.panels().visible("pellow-flight").size(); };
  int landed = 0;
  for (int count = 0; count < 50; ++count) {
    flights.flyOut(icon, FlightAnimator::Subject::icon, {0, 0, 300, 200}, {0, 0, 34, 34},
                   [&] { ++landed; });
    desktop.run(0.002);
    ASSERT_EQ(flying(), 1);
  }
  std::size_t most = 0;
  std::size_t before = 1;
  while (landed < 50) {
    desktop.run(0.01);
    EXPECT_LE(flying(), before + 1);
    before = flying();
    most = std::max(most, before);
  }
  EXPECT_EQ(most, 8);
  desktop.runUntilQuiet();
  EXPECT_EQ(landed, 50);
}

}  // namespace
}  // namespace pellow
