#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/harness/everyday.h"
#include "tests/harness/monitors.h"

// The two reports, written beside a program that has put windows away. `Report` is a column of the
// table of scripts/window-managers.

namespace pellow::desktop {
namespace {

using Lines = std::vector<std::string>;

constexpr PixelRect place{300, 200, 400, 250};

class ReportsTest : public Everyday {
 protected:
  std::unique_ptr<ChildProcess> startReport(const std::string& flag) {
    return desktop.start({PELLOW_BINARY, flag}, {{"TMPDIR", desktop.runtimeFolder().native()}});
  }

  // What it prints until it ends, which must be with status 0; the file says the same.
  Lines rest(ChildProcess& report, const std::string& file) const {
    Lines lines;
    while (auto line = report.readLine()) lines.push_back(*line);
    EXPECT_EQ(report.exitStatus(), 0) << report.standardError();
    std::ifstream written(desktop.runtimeFolder() / file);
    Lines kept;
    for (std::string line; std::getline(written, line);) kept.push_back(line);
    EXPECT_EQ(kept, lines);
    return lines;
  }
  Lines offscreen() { return rest(*startReport("--diagnose-offscreen"), offscreenFile); }

  static constexpr auto offscreenFile = "pellow-offscreen-diagnostic.txt";

  TestClient client{desktop};
};

TEST_F(ReportsTest, Report) {
  const auto away = open(client, "Away", place);
  const auto here = open(client, "Here", {500, 300, 300, 200});
  ASSERT_NO_FATAL_FAILURE(launch());
  ASSERT_NO_FATAL_FAILURE(putOffScreen(away));

  const auto lines = offscreen();
  const auto has = [&](std::string_view line) { return std::ranges::count(lines, line) == 1; };
  EXPECT_TRUE(has("Own AX windows found: 1"));
  EXPECT_TRUE(has("Picture of the screens: it shows the window"));
  EXPECT_EQ(has("RESULT: a window parked by the real formula is out of sight."), !minimizesInstead);
  EXPECT_EQ(has("This desktop keeps windows on its screen, so \"Slide off-screen\" minimizes them "
                "here."),
            minimizesInstead);
  EXPECT_FALSE(HasFailure()) << nlohmann::json(lines).dump(1);
  if (minimizesInstead) noteOnce("It says that windows stay in sight.");

  EXPECT_TRUE(isAway(away)) << story(away);
  expectHome({here});
  EXPECT_TRUE(hasTabs(1));
  EXPECT_TRUE(eventually([&] { return desktop.shownWindows("pellow", "pellow-probe").empty(); }));
}

TEST_F(ReportsTest, PicturesOfAllMonitorsAreLookedAt) {
  Monitors monitors(desktop.display());
  monitors.plug("left", {0, 0, 300, 800}, true);
  monitors.plug("right", {300, 0, 980, 700});
  desktop.restartWindowManager();
  const auto lines = offscreen();
  EXPECT_EQ(std::ranges::count(lines, "Picture of the screens: it shows the window"), 1);
  const auto second = std::ranges::find(lines, "REAL FORMULA right, window on secondary display");
  ASSERT_GE(lines.end() - second, 7) << nlohmann::json(lines).dump(1);
  EXPECT_EQ(second[1], "  asked for: (1279, 672)");
  EXPECT_EQ(second[6], "  picture of the screens: 0.0% of the window still painted");
}

TEST_F(ReportsTest, EveryWindowIsFoundAndPhotographed) {
  TestClient other(desktop, "Other");
  open(client, "Document", place);
  client.open("Letter", {350, 260, 500, 300});
  other.open("Page", place);
  ASSERT_NO_FATAL_FAILURE(launch());
  const auto report = startReport("--diagnose-capture");
  const auto lines = rest(*report, "pellow-capture-diagnostic.txt");
  EXPECT_EQ(lines.front(), "=== Pellow capture diagnostic ===");
  EXPECT_EQ(lines.back(), "=== end ===");
  const auto countOf = [&](std::string_view beginning) {
    return std::ranges::count_if(lines,
                                 [&](const auto& line) { return line.starts_with(beginning); });
  };
  EXPECT_EQ(countOf("    matched '"), 3) << nlohmann::json(lines).dump(1);
  EXPECT_EQ(countOf("    captured "), 3);
  EXPECT_EQ(countOf("Other: 1 AX window(s)"), 1);
}

TEST_F(ReportsTest, ASignalAndAUserEndItEarly) {
  const auto probe = [this] {
    const auto shown = desktop.shownWindows("pellow", "pellow-probe");
    return shown.empty() ? WindowID{0} : shown[0];
  };
  const auto report = startReport("--diagnose-offscreen");
  ASSERT_TRUE(eventually([&] { return probe() != 0; }));
  report->send(SIGINT);
  EXPECT_EQ(rest(*report, offscreenFile).back(), "FAILED: interrupted by a signal.");
  ASSERT_TRUE(eventually([&] { return probe() == 0; }));

  const auto closed = startReport("--diagnose-offscreen");
  ASSERT_TRUE(eventually([&] { return probe() != 0; }));
  closed->send(SIGSTOP);
  desktop.close(probe());
  client.open("Later", place);  // the window manager has handed on the wish
  closed->send(SIGCONT);
  const auto lines = rest(*closed, offscreenFile);
  EXPECT_TRUE(std::ranges::count(lines, "  got: error -25202 (the window no longer exists)") > 0 ||
              lines.back() == "FAILED: could not see our own window through AX.")
      << nlohmann::json(lines).dump(1);
}

}  // namespace
}  // namespace pellow::desktop
