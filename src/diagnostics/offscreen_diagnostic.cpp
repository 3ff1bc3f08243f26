#include "diagnostics/offscreen_diagnostic.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

#include "diagnostics/pause.h"

namespace pellow {
namespace {

constexpr auto windowTitle = "Pellow Diagnostic";
constexpr Size usualSize{400, 300};  // points
constexpr Size veryWide{2400, 300};
constexpr Seconds untilPlaced = 0.6;
constexpr Seconds untilMoved = 0.25;
constexpr int looksForWindow = 20;   // that a busy desktop has not placed yet
constexpr double moveTolerance = 2;  // points
constexpr double beyond = 100;       // points, of the control placements

std::string percent(double share) { return fmt::format("{:.1f}%", 100 * share); }

std::string distancesText(const std::vector<std::pair<double, std::string_view>>& distances) {
  std::string text;
  for (const auto& [points, side] : distances)
    if (points > 0)
      text += fmt::format("{}{:.0f} points {}", text.empty() ? "" : ", ", points, side);
  return text.empty() ? "nothing" : text;
}

}  // namespace

OffscreenDiagnostic::OffscreenDiagnostic(const Surroundings& around)
    : around_(around),
      places_(around.displays),
      witness_(around.mainQueue, around.screenCapture, around.screens) {}

Task<> OffscreenDiagnostic::run() {
  auto& report = around_.report;
  report.emit("=== Pellow off-screen diagnostic ===");
  const bool isTrusted = around_.accessibility.isProcessTrusted();
  report.emit(fmt::format("Accessibility permission: {}", isTrusted));
  if (!isTrusted) co_return report.emit("FAILED: no Accessibility permission for this launch.");
  emitDesktop();
  if (around_.displays.frames().empty()) co_return report.emit("FAILED: there is no screen.");

  co_await witness_.lookBefore();
  probe_ = around_.probeWindows.openWindow("pellow-probe", windowTitle, usualSize,
                                           ColourWitness::colour);
  co_await pause(around_.mainQueue, untilPlaced);
  window_ = co_await findWindow();
  if (!window_) co_return report.emit("FAILED: could not see our own window through AX.");
  const auto start = co_await frame();
  if (!start) co_return report.emit("FAILED: could not read our own window frame.");
  report.emit("Start frame (Quartz): " + DiagnosticReport::fmt(*start));
  const auto seen = co_await witness_.learn(*start);
  report.emit("Picture of the screens: " +
              (seen ? "it shows the window" : "no witness. " + seen.error().sentence));
  co_await tryPlaces(*start);
  co_await put(start->origin, "back");
  emitResult();
}

void OffscreenDiagnostic::emitDesktop() {
  auto& report = around_.report;
  const auto screens = around_.screens.all();
  for (std::size_t index = 0; index < screens.size(); ++index)
    report.emit(fmt::format("Screen {} (AppKit): frame {}, visible frame {}", index,
                            DiagnosticReport::fmt(screens[index].frame),
                            DiagnosticReport::fmt(screens[index].visibleFrame)));
  const auto all = unionOfScreens();
  report.emit("All screens (AppKit): " +
              DiagnosticReport::fmt(around_.displays.flip().toAppKit(all)));
  report.emit("All screens (Quartz): " + DiagnosticReport::fmt(all));
  report.emit("Desktop: " + around_.workspace.windowServerDescription());
  report.emit("Pellow version: " + around_.version);
}

QuartzRect OffscreenDiagnostic::unionOfScreens() const {
  const auto frames = around_.displays.frames();
  if (frames.empty()) return {};
  return std::accumulate(frames.begin(), frames.end(), frames.front(),
                         [](const auto& all, const auto& each) { return all.united(each); });
}

Task<> OffscreenDiagnostic::tryPlaces(QuartzRect start) {
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
}

Task<> OffscreenDiagnostic::tryOnSecondScreen(QuartzRect screen) {
  const auto now = (co_await frame()).value_or(QuartzRect({}, usualSize));
  co_await put({screen.midX() - now.width() / 2, screen.midY() - now.height() / 2},
               "to the secondary display");
  co_await tryFormula("REAL FORMULA right, window on secondary display", StripEdge::right);
}

Task<> OffscreenDiagnostic::tryFormula(std::string_view title, StripEdge edge) {
  const auto now = (co_await frame()).value_or(QuartzRect({}, usualSize));
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
    report.emit("  got: " + DiagnosticReport::fmt(moved.error()));
    co_return false;
  }
  const auto now = co_await frame();
  if (!now) {
    report.emit("  got: no frame");
    co_return false;
  }
  emitPlace(asked, *now);
  const bool isOffDisplays = around_.displays.isHidden(*now);
  const auto painted = co_await witness_.paintedShare(*now);
  report.emit("  picture of the screens: " +
              (painted ? percent(*painted) + " of the window still painted"
                       : "no witness. " + painted.error().sentence));
  co_return isOffDisplays&& painted.value_or(0) <= Displays::hiddenFraction;
}

void OffscreenDiagnostic::emitPlace(QuartzPoint asked, const QuartzRect& frame) {
  auto& report = around_.report;
  const bool isClamped = std::abs(frame.minX() - asked.x) > moveTolerance ||
                         std::abs(frame.minY() - asked.y) > moveTolerance;
  const auto all = unionOfScreens();
  report.emit(fmt::format("  got: {}, size {}", DiagnosticReport::fmt(frame.origin),
                          DiagnosticReport::fmt(frame.size)));
  report.emit(fmt::format("  clamped: {}", isClamped ? "yes" : "no"));
  report.emit("  beyond the screens: " + distancesText({{all.minX() - frame.minX(), "left"},
                                                        {frame.maxX() - all.maxX(), "right"},
                                                        {all.minY() - frame.minY(), "above"},
                                                        {frame.maxY() - all.maxY(), "below"}}));
  report.emit("  " + percent(std::min(around_.displays.visibleFraction(frame).value_or(0), 1.0)) +
              " of the window still on screen");
}

void OffscreenDiagnostic::emitResult() {
  auto& report = around_.report;
  report.emit("");
  report.emit(
      failedParkings_ == 0
          ? "RESULT: a window parked by the real formula is out of sight."
          : fmt::format("RESULT: a window could not be put out of sight by the real formula in {} "
                        "of {} cases.",
                        failedParkings_, parkings_));
  if (around_.workspace.keepsWindowsOnDisplays()) report.emit(around_.texts.offscreenIsMinimize);
}

// The system needs a moment to place a new window, and a busy one more than that.
Task<std::optional<AXElement>> OffscreenDiagnostic::findWindow() {
  std::expected<std::vector<TargetWindow>, AXError> windows;
  std::optional<AXElement> found;
  for (int look = 0; look < looksForWindow && !found; ++look) {
    if (look > 0) co_await pause(around_.mainQueue, untilMoved);
    windows = co_await ownWindows();
    if (!windows) continue;
    found = co_await around_.axQueue.ax([&]() -> std::optional<AXElement> {
      for (const auto& window : *windows)
        if (window.state().title == windowTitle) return window.element;
      return std::nullopt;
    });
  }
  around_.report.emit(fmt::format("Own AX windows found: {}", windows ? windows->size() : 0));
  if (!windows)
    around_.report.emit("FAILED: AXWindows answers " + DiagnosticReport::fmt(windows.error()));
  co_return found;
}

Task<std::expected<std::vector<TargetWindow>, AXError>> OffscreenDiagnostic::ownWindows() {
  co_return co_await around_.axQueue.ax([&] {
    return TargetWindow::everyWindow(around_.accessibility, around_.ownProcess,
                                     AX::timeout::windowChange);
  });
}

Task<std::optional<QuartzRect>> OffscreenDiagnostic::frame() {
  co_return co_await around_.axQueue.ax(
      [&] { return AX::frame(*window_, AX::timeout::windowChange); });
}

Task<std::expected<void, AXError>> OffscreenDiagnostic::moveTo(QuartzPoint origin) {
  const auto written = co_await around_.axQueue.ax([&] {
    return window_->setAttribute(AX::attribute::position, origin, AX::timeout::windowChange);
  });
  co_await pause(around_.mainQueue, untilMoved);
  co_return written;
}

Task<> OffscreenDiagnostic::put(QuartzPoint origin, std::string_view where) {
  const auto moved = co_await moveTo(origin);
  if (!moved)
    around_.report.emit(fmt::format("FAILED: could not move the window {}: {}", where,
                                    DiagnosticReport::fmt(moved.error())));
}

Task<> OffscreenDiagnostic::resize(Size contentSize) {
  probe_->setContentSize(contentSize);
  co_await pause(around_.mainQueue, untilMoved);
}

}  // namespace pellow
