#include "diagnostics/offscreen_diagnostic.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include "access/target_window.h"
#include "capture/in_time.h"

namespace pellow {
namespace {

constexpr auto windowTitle = "Pellow Diagnostic";
constexpr Size usualSize{400, 300};  // points
constexpr Size veryWide{2400, 300};
constexpr Colour fill{0.90, 0.18, 0.54};  // seldom found elsewhere
constexpr double colourTolerance = 8;     // of 255
constexpr Seconds untilPlaced = 0.6;
constexpr Seconds untilMoved = 0.25;
constexpr int looksForWindow = 20;     // that a busy desktop has not placed or painted yet
constexpr int looksForAbsence = 5;     // of a window that it still paints
constexpr double moveTolerance = 2;    // points
constexpr double beyond = 100;         // points, of the control placements
constexpr double seenAtMost = 0.05;    // of a window that counts as away
constexpr double enoughToJudge = 0.5;  // of the window at its start

bool isFill(std::uint32_t pixel) {
  const auto isNear = [](double wanted, std::uint32_t byte) {
    return std::abs(wanted * 255 - byte) <= colourTolerance;
  };
  return isNear(fill.red(), pixel >> 16 & 0xff) && isNear(fill.green(), pixel >> 8 & 0xff) &&
         isNear(fill.blue(), pixel & 0xff);
}

std::string percent(double share) { return fmt::format("{:.1f}%", 100 * share); }

std::string parts(const std::vector<std::pair<double, std::string_view>>& distances) {
  std::string text;
  for (const auto& [points, side] : distances)
    if (points > 0)
      text += fmt::format("{}{:.0f} points {}", text.empty() ? "" : ", ", points, side);
  return text.empty() ? "nothing" : text;
}

}  // namespace

OffscreenDiagnostic::OffscreenDiagnostic(const Surroundings& around)
    : around_(around), places_(around.displays) {}

Task<> OffscreenDiagnostic::run() {
  auto& report = around_.report;
  report.emit("=== Pellow off-screen diagnostic ===");
  const bool isTrusted = around_.accessibility.isProcessTrusted();
  report.emit(fmt::format("Accessibility permission: {}", isTrusted));
  if (!isTrusted) co_return report.emit("FAILED: no Accessibility permission for this launch.");
  emitDesktop();

  before_ = co_await pointsInColour();
  contentSize_ = usualSize;
  probe_ = around_.probeWindows.openWindow("pellow-probe", windowTitle, usualSize, fill);
  co_await pause(untilPlaced);
  window_ = co_await findWindow();
  if (!window_) co_return report.emit("FAILED: could not see our own window through AX.");
  const auto start = co_await frame();
  if (!start) co_return report.emit("FAILED: could not read our own window frame.");
  report.emit("Start frame (Quartz): " + DiagnosticReport::fmt(*start));
  co_await tryPlaces(*start);
  (void)co_await moveTo(start->origin);
}

void OffscreenDiagnostic::emitDesktop() {
  auto& report = around_.report;
  const auto screens = around_.screens.all();
  for (std::size_t index = 0; index < screens.size(); ++index)
    report.emit(fmt::format("Screen {}: frame {}, visible frame {}", index,
                            DiagnosticReport::fmt(screens[index].frame),
                            DiagnosticReport::fmt(screens[index].visibleFrame)));
  const auto all = unionOfScreens();
  report.emit("All screens (AppKit): " +
              DiagnosticReport::fmt(around_.displays.flip().toAppKit(all)));
  report.emit("All screens (Quartz): " + DiagnosticReport::fmt(all));
  report.emit("Windows are placed by: " + around_.workspace.windowServerDescription());
}

QuartzRect OffscreenDiagnostic::unionOfScreens() const {
  const auto frames = around_.displays.frames();
  if (frames.empty()) return {};
  return std::accumulate(frames.begin(), frames.end(), frames.front(),
                         [](const auto& all, const auto& each) { return all.united(each); });
}

Task<> OffscreenDiagnostic::tryPlaces(QuartzRect start) {
  const auto atStart =
      co_await paintedShare(looksForWindow, [](double share) { return share >= enoughToJudge; });
  around_.report.emit(
      atStart ? fmt::format("Picture of the screens: it shows {} of the window", percent(*atStart))
              : "Picture of the screens: none. " + atStart.error().sentence);
  if (atStart && *atStart < enoughToJudge)
    before_ = std::unexpected(SystemError{"It did not show the window at its start."});

  co_await tryFormula("REAL FORMULA right, default window", StripEdge::right);
  co_await tryFormula("REAL FORMULA left, default window", StripEdge::left);
  co_await resize(veryWide);
  co_await tryFormula("REAL FORMULA right, very wide window (2400pt)", StripEdge::right);
  co_await resize(usualSize);
  if (const auto screens = around_.displays.frames(); screens.size() > 1)
    co_await tryOnSecondScreen(screens[1]);
  const auto all = unionOfScreens();
  co_await tryPlace("control: fully right of arrangement", {all.maxX() + beyond, start.minY()});
  co_await tryPlace("control: fully below arrangement", {start.minX(), all.maxY() + beyond});
  emitResult();
}

Task<> OffscreenDiagnostic::tryOnSecondScreen(QuartzRect screen) {
  const auto now = (co_await frame()).value_or(QuartzRect({}, usualSize));
  (void)co_await moveTo({screen.midX() - now.width() / 2, screen.midY() - now.height() / 2});
  co_await tryFormula("REAL FORMULA right, window on secondary display", StripEdge::right);
}

Task<> OffscreenDiagnostic::tryFormula(std::string_view title, StripEdge edge) {
  const auto now = (co_await frame()).value_or(QuartzRect({}, contentSize_));
  ++parkings_;
  if (!co_await tryPlace(title, places_.parkOrigin(now, edge))) ++failedParkings_;
}

Task<bool> OffscreenDiagnostic::tryPlace(std::string_view title, QuartzPoint asked) {
  auto& report = around_.report;
  report.emit("");
  report.emit(title);
  report.emit("  asked for: " + DiagnosticReport::fmt(asked));
  const auto moved = co_await moveTo(asked);
  if (!moved) {
    report.emit(fmt::format("  got: error {}", static_cast<int>(moved.error())));
    co_return false;
  }
  const auto now = co_await frame();
  if (!now) {
    report.emit("  got: no frame");
    co_return false;
  }
  emitPlace(asked, *now);
  const bool isBeyond = around_.displays.isHidden(*now);
  const auto painted =
      co_await paintedShare(looksForAbsence, [](double share) { return share <= seenAtMost; });
  if (!painted) co_return isBeyond;
  report.emit(
      fmt::format("  picture of the screens: {} of the window still painted", percent(*painted)));
  co_return isBeyond && *painted <= seenAtMost;
}

void OffscreenDiagnostic::emitPlace(QuartzPoint asked, const QuartzRect& frame) {
  auto& report = around_.report;
  const bool isClamped = std::abs(frame.minX() - asked.x) > moveTolerance ||
                         std::abs(frame.minY() - asked.y) > moveTolerance;
  const auto all = unionOfScreens();
  report.emit(fmt::format("  got: {}, size {}", DiagnosticReport::fmt(frame.origin),
                          DiagnosticReport::fmt(frame.size)));
  report.emit(fmt::format("  clamped: {}", isClamped ? "yes" : "no"));
  report.emit("  beyond the screens: " + parts({{all.minX() - frame.minX(), "left"},
                                                {frame.maxX() - all.maxX(), "right"},
                                                {all.minY() - frame.minY(), "above"},
                                                {frame.maxY() - all.maxY(), "below"}}));
  report.emit("  " + percent(around_.displays.visibleFraction(frame).value_or(0)) +
              " of the window still on screen");
}

void OffscreenDiagnostic::emitResult() {
  auto& report = around_.report;
  report.emit("");
  report.emit(failedParkings_ == 0
                  ? "RESULT: a window parked by the real formula is out of sight."
                  : fmt::format("RESULT: a window parked by the real formula stays in sight in {} "
                                "of {} cases.",
                                failedParkings_, parkings_));
  if (around_.workspace.keepsWindowsOnDisplays()) report.emit(around_.texts.offscreenIsMinimize);
}

// The system needs a moment to place a new window, and a busy one more than that.
Task<std::optional<AXElement>> OffscreenDiagnostic::findWindow() {
  std::size_t count = 0;
  std::optional<AXElement> found;
  for (int look = 0; look < looksForWindow && !found; ++look) {
    if (look > 0) co_await pause(untilMoved);
    const auto windows = co_await around_.axQueue.ax([&] {
      return TargetWindow::everyWindow(around_.accessibility, around_.ownProcess,
                                       AX::timeout::windowChange)
          .value_or(std::vector<TargetWindow>());
    });
    count = windows.size();
    found = co_await around_.axQueue.ax([&]() -> std::optional<AXElement> {
      for (const auto& window : windows)
        if (window.state().title == windowTitle) return window.element;
      return std::nullopt;
    });
  }
  around_.report.emit(fmt::format("Own AX windows found: {}", count));
  co_return found;
}

Task<std::optional<QuartzRect>> OffscreenDiagnostic::frame() {
  co_return co_await around_.axQueue.ax(
      [&] { return AX::frame(*window_, AX::timeout::windowChange); });
}

Task<std::expected<void, AXError>> OffscreenDiagnostic::moveTo(QuartzPoint origin) {
  const auto written = co_await around_.axQueue.ax([&] {
    return window_->setAttribute(AX::attribute::position, origin, AX::timeout::windowChange);
  });
  co_await pause(untilMoved);
  co_return written;
}

Task<> OffscreenDiagnostic::resize(Size contentSize) {
  contentSize_ = contentSize;
  probe_->setContentSize(contentSize);
  co_await pause(untilMoved);
}

Task<OffscreenDiagnostic::Share> OffscreenDiagnostic::paintedShare(
    int looksAtMost, std::function<bool(double)> isExpected) {
  Share share = before_;
  for (int look = 0; look < looksAtMost && share; ++look) {
    if (look > 0) co_await pause(untilMoved);
    share = co_await pointsInColour();
    if (share) *share = std::max(0.0, *share - *before_) / contentSize_.width / contentSize_.height;
    if (share && isExpected(*share)) break;
  }
  co_return share;
}

Task<OffscreenDiagnostic::Share> OffscreenDiagnostic::pointsInColour() {
  using Picture = std::expected<DisplayPicture, SystemError>;
  double points = 0;
  for (const auto& screen : around_.screens.all()) {
    if (!screen.displayID) continue;
    const auto picture =
        co_await Answer<Picture>(inTime<Picture>(around_.mainQueue, [&](auto onDisplay) {
          return around_.screenCapture.captureDisplay(*screen.displayID, std::move(onDisplay));
        }));
    if (!picture) co_return std::unexpected(picture.error());
    points += static_cast<double>(std::ranges::count_if(picture->pixels, isFill));
  }
  co_return points;
}

Task<> OffscreenDiagnostic::pause(Seconds duration) {
  co_await Answer<bool>(
      [&](auto onOver) { return around_.mainQueue.after(duration, [onOver] { onOver(true); }); });
}

}  // namespace pellow
