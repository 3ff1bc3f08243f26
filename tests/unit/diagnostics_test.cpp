#include <gtest/gtest.h>

#include <fmt/ranges.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/report_delegate.h"
#include "platforms/simulated/desktop.h"

namespace pellow {
namespace {

using Lines = std::vector<std::string>;

class Diagnostics : public testing::Test {
 protected:
  explicit Diagnostics(ReportMode mode, std::string fileName)
      : mode_(mode), path_("/tmp/" + std::move(fileName)) {}

  void start() {
    delegate_.emplace(desktop, mode_);
    desktop.process().onTerminate([this] { delegate_->applicationWillTerminate(); });
    delegate_->applicationDidFinishLaunching();
  }

  // Until the process has ended: what it printed, which is what the file says.
  const Lines& report() {
    start();
    desktop.runUntilQuiet();
    EXPECT_EQ(desktop.process().exitStatus(), 0);
    EXPECT_EQ(fmt::format("{}", fmt::join(lines(), "\n")), desktop.files().disk().contents(path_));
    return lines();
  }
  const Lines& lines() { return desktop.process().printed(); }

  // The lines below one that reads like this, up to the next empty one.
  Lines below(const std::string& title) {
    auto line = std::ranges::find(lines(), title);
    if (line == lines().end()) return {"no " + title};
    return {line + 1, std::find(line + 1, lines().end(), "")};
  }

  simulated::Desktop desktop;

 private:
  ReportMode mode_;
  std::string path_;
  std::optional<ReportDelegate> delegate_;
};

constexpr auto right = "REAL FORMULA right, default window";
constexpr auto left = "REAL FORMULA left, default window";
constexpr auto wide = "REAL FORMULA right, very wide window (2400pt)";
constexpr auto second = "REAL FORMULA right, window on secondary display";

class OffscreenReport : public Diagnostics {
 protected:
  OffscreenReport() : Diagnostics(ReportMode::offscreen, "pellow-offscreen-diagnostic.txt") {}

  void withWindow(Seconds at, std::function<void(const simulated::Window&)> act) {
    desktop.after(at, [this, act = std::move(act)] { act(desktop.window("Pellow Diagnostic")); });
  }
};

TEST_F(OffscreenReport, TellsEveryPlaceOfADesktopThatLetsWindowsGo) {
  withWindow(2.5, [](const auto& window) { EXPECT_EQ(window.frame().minX(), 520) << "back"; });
  EXPECT_EQ(report(),
            (Lines{
                "=== Pellow off-screen diagnostic ===",
                "Accessibility permission: true",
                "Screen 0 (AppKit): frame (0, 0) 1440 x 900, visible frame (0, 70) 1440 x 805",
                "All screens (AppKit): (0, 0) 1440 x 900",
                "All screens (Quartz): (0, 0) 1440 x 900",
                "Desktop: a simulated desktop",
                "Pellow version: 1.0",
                "Own AX windows found: 1",
                "Start frame (Quartz): (520, 263) 400 x 328",
                "Picture of the screens: it shows the window",
                "",
                right,
                "  asked for: (1439, 872)",
                "  got: (1439, 872), size 400 x 328",
                "  clamped: no",
                "  beyond the screens: 399 points right, 300 points below",
                "  0.0% of the window still on screen",
                "  picture of the screens: 0.0% of the window still painted",
                "",
                left,
                "  asked for: (-399, 872)",
                "  got: (-399, 872), size 400 x 328",
                "  clamped: no",
                "  beyond the screens: 399 points left, 300 points below",
                "  0.0% of the window still on screen",
                "  picture of the screens: 0.0% of the window still painted",
                "",
                wide,
                "  asked for: (1439, 872)",
                "  got: (1439, 872), size 2400 x 328",
                "  clamped: no",
                "  beyond the screens: 2399 points right, 300 points below",
                "  0.0% of the window still on screen",
                "  picture of the screens: 0.0% of the window still painted",
                "",
                "control: fully right of arrangement",
                "  asked for: (1540, 263)",
                "  got: (1540, 263), size 400 x 328",
                "  clamped: no",
                "  beyond the screens: 500 points right",
                "  0.0% of the window still on screen",
                "  picture of the screens: 0.0% of the window still painted",
                "",
                "control: fully below arrangement",
                "  asked for: (520, 1000)",
                "  got: (520, 1000), size 400 x 328",
                "  clamped: no",
                "  beyond the screens: 428 points below",
                "  0.0% of the window still on screen",
                "  picture of the screens: 0.0% of the window still painted",
                "",
                "RESULT: a window parked by the real formula is out of sight.",
            }));
}

TEST_F(OffscreenReport, WithoutPermissionItHasThreeLines) {
  desktop.accessibility().setTrusted(false);
  EXPECT_EQ(report(),
            (Lines{"=== Pellow off-screen diagnostic ===", "Accessibility permission: false",
                   "FAILED: no Accessibility permission for this launch."}));
}

TEST_F(OffscreenReport, ThePictureSaysWhatCoordinatesHide) {
  withWindow(0.7, [](const auto& window) { window.isPaintedAt({1340, 263}); });
  report();
  EXPECT_EQ(below(right)[1], "  got: (1439, 872), size 400 x 328");
  EXPECT_EQ(below(right).back(), "  picture of the screens: 25.0% of the window still painted");
  EXPECT_EQ(lines().back(),
            "RESULT: a window could not be put out of sight by the real formula in 2 of 3 cases.");
}

// A compositor may be late; and something else may have the colour.
TEST_F(OffscreenReport, ThePictureIsLookedAtUntilItIsTrue) {
  const auto other =
      desktop.probeWindows().openWindow("other", "Other", {90, 50}, {0.9, 0.18, 0.54});
  desktop.window("Other").moveTo({0, 30});
  withWindow(0.3, [](const auto& window) { window.isPaintedAt({2000, 0}); });
  withWindow(1, [](const auto& window) { window.isPaintedAt({700, 263}); });
  withWindow(2, [](const auto& window) { window.isPaintedAt({2000, 0}); });
  report();
  EXPECT_EQ(lines()[9], "Picture of the screens: it shows the window");
  EXPECT_EQ(below(right).back(), "  picture of the screens: 0.0% of the window still painted");
}

TEST_F(OffscreenReport, APictureThatNeverShowedTheWindowIsNoWitness) {
  withWindow(0.3, [](const auto& window) { window.isPaintedAt({1260, 263}); });
  report();
  EXPECT_EQ(lines()[9],
            "Picture of the screens: no witness. It does not show the window at its start.");
  EXPECT_EQ(below(right).back(),
            "  picture of the screens: no witness. It does not show the window at its start.");
}

TEST_F(OffscreenReport, ADesktopThatClampsIsToldApart) {
  desktop.workspace().keepWindowsOnDisplays();
  withWindow(0.3, [](const auto& window) { window.clampsToDisplay(); });
  report();
  EXPECT_EQ(below(left),
            (Lines{"  asked for: (-399, 872)", "  got: (0, 502), size 400 x 328", "  clamped: yes",
                   "  beyond the screens: nothing", "  100.0% of the window still on screen",
                   "  picture of the screens: 100.0% of the window still painted"}));
  EXPECT_EQ(lines().back(), macTexts.offscreenIsMinimize);
}

TEST_F(OffscreenReport, AWindowOnASecondDisplayIsParkedOnTheOutermost) {
  desktop.screens().plug(2, {-1000, 0, 1000, 800});
  withWindow(2, [](const auto& window) { EXPECT_EQ(window.frame().midX(), -500); });
  withWindow(2.2, [](const auto& window) { window.isPaintedAt({-100, 200}); });
  report();
  EXPECT_EQ(below(second).back(), "  picture of the screens: 100.0% of the window still painted");
  EXPECT_EQ(below(second)[0], "  asked for: (1439, 872)");
  EXPECT_EQ(below(left)[0], "  asked for: (-1399, 872)");
}

TEST_F(OffscreenReport, RefusalsAndDeathsAreLines) {
  withWindow(0.3, [this](const auto& window) {
    window.failsNext("AXPosition", AXError::cannotComplete, simulated::AXCall::write);
    desktop.after(1, [window] { window.close(); });
  });
  report();
  EXPECT_EQ(below(right)[1], "  got: error -25204 (the app did not respond in time)");
  EXPECT_EQ(below(wide)[1], "  got: error -25202 (the window no longer exists)");
  EXPECT_EQ(lines().back(),
            "RESULT: a window could not be put out of sight by the real formula in 2 of 3 cases.");
}

TEST_F(OffscreenReport, AWindowThatCannotBeReadEndsIt) {
  withWindow(0.3, [](const auto& window) { window.fails("AXPosition", AXError::failure); });
  report();
  EXPECT_EQ(lines().back(), "FAILED: could not read our own window frame.");
}

TEST_F(OffscreenReport, AWindowThatNobodySeesEndsIt) {
  withWindow(0.3, [](const auto& window) { window.fails("AXTitle", AXError::failure); });
  report();
  EXPECT_EQ(lines().back(), "FAILED: could not see our own window through AX.");
}

TEST_F(OffscreenReport, WithoutPicturesTheCoordinatesMustDo) {
  desktop.screenCapture().allow(false);
  report();
  EXPECT_EQ(below("Start frame (Quartz): (520, 263) 400 x 328")[0],
            "Picture of the screens: no witness. There is no Screen Recording permission.");
  EXPECT_EQ(below(right).back(),
            "  picture of the screens: no witness. There is no Screen Recording permission.");
  EXPECT_EQ(lines().back(), "RESULT: a window parked by the real formula is out of sight.");
}

TEST_F(OffscreenReport, ASignalEndsItWithWhatIsKnown) {
  desktop.files().disk().isFull = "The disk is full.";
  start();
  desktop.after(1, [this] { desktop.process().receive(TerminationSignal::interrupt); });
  desktop.runUntilQuiet();
  EXPECT_EQ(desktop.process().exitStatus(), 0);
  EXPECT_EQ(lines().back(), "FAILED: interrupted by a signal.");
  EXPECT_TRUE(desktop.hasLogged("The report could not be written: The disk is full."));
  EXPECT_EQ(below(right).front(), "  asked for: (1439, 872)");
}

TEST_F(OffscreenReport, TheEndOfTheSessionEndsItToo) {
  desktop.after(1, [this] { desktop.process().terminate(); });
  report();
  EXPECT_EQ(lines().back(), "FAILED: the session ended.");
}

class CaptureReport : public Diagnostics {
 protected:
  CaptureReport() : Diagnostics(ReportMode::capture, "pellow-capture-diagnostic.txt") {}
};

TEST_F(CaptureReport, TellsOfEveryWindowOfTheOthers) {
  const auto notes = desktop.launch("Notes", "com.example.notes");
  notes.openWindow("Shopping\nlist", {100, 100, 800, 600});
  notes.openWindow("Away", {900, 100, 300, 200}).minimize();
  notes.openWindow("Nameless", {40, 50, 90, 80}).fails("AXTitle", AXError::failure);
  notes.openWindow("Dead", {0, 0, 300, 200}).fails("AXPosition", AXError::failure);
  desktop.launch("Helper", "com.example.helper", ActivationPolicy::accessory)
      .openWindow("Palette", {0, 0, 100, 100});
  desktop.launch("Cover").openWindow("Cover", {900, 100, 300, 200});
  desktop.launch("Mute", "com.example.mute").openWindow("Mute", {0, 0, 90, 90});
  desktop.application("Mute").hangs();
  EXPECT_EQ(report(),
            (Lines{
                "=== Pellow capture diagnostic ===",
                "Screen Recording permission (as seen by THIS process): true",
                "Notes: 4 AX window(s)",
                "  'Dead' [no frame]",
                "  '' at (40, 50) 90 x 80",
                "    matched 'Nameless'",
                "    *** TITLE MISMATCH ***",
                "    captured 90 x 80",
                "  'Shopping\\nlist' at (100, 100) 800 x 600",
                "    matched 'Shopping\\nlist'",
                "    captured 800 x 600",
                "  'Away' at (900, 100) 300 x 200, minimized",
                "    NO MATCH for 'Away'",
                "Cover: 1 AX window(s)",
                "  'Cover' at (900, 100) 300 x 200",
                "    matched 'Cover'",
                "    captured 300 x 200",
                "Mute: 0 AX window(s)",
                "  FAILED: AXWindows answers error -25204 (the app did not respond in time)",
                "=== end ===",
            }));
}

TEST_F(CaptureReport, WithoutPermissionItIsStillComplete) {
  desktop.screenCapture().allow(false);
  desktop.launch("Notes").openWindow("Shopping", {100, 100, 800, 600});
  report();
  EXPECT_EQ(lines()[1], "Screen Recording permission (as seen by THIS process): false");
  auto caveat = below("");
  ASSERT_GE(caveat.size(), 7U);
  caveat.resize(7);
  EXPECT_EQ(caveat, (Lines{"This may be wrong. Screen Recording is granted to an application",
                           "bundle launched through LaunchServices, and this diagnostic is the",
                           "bare executable started from a shell, which macOS can treat as a",
                           "different thing. Accessibility is not fussy about this; Screen",
                           "Recording is.",
                           "Settings > Permissions inside the running app is the authority.",
                           "If it says Granted there, the grant is fine and this line is noise."}));
  EXPECT_EQ(lines().back(), "=== end ===");
}

TEST_F(CaptureReport, APictureThatFailsIsALine) {
  desktop.screenCapture().failNext({"The camera is broken."}, simulated::CaptureCall::image);
  desktop.launch("Notes").openWindow("Shopping", {100, 100, 800, 600});
  EXPECT_EQ(report().end()[-2], "    CAPTURE FAILED: The camera is broken.");
}

}  // namespace
}  // namespace pellow
