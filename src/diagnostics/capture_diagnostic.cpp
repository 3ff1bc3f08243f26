#include "diagnostics/capture_diagnostic.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <string_view>
#include <utility>

#include "capture/in_time.h"

namespace pellow {

CaptureDiagnostic::CaptureDiagnostic(const Surroundings& around)
    : around_(around), windowCapture_(around.screenCapture, around.mainQueue, around.texts) {}

Task<> CaptureDiagnostic::diagnose() {
  around_.report.emit("=== Pellow capture diagnostic ===");
  emitPermission();
  const auto shareable = co_await shareableWindows();
  for (const auto& each : around_.workspace.runningApplications())
    if (each.activationPolicy == ActivationPolicy::regular && each.pid != around_.ownProcess)
      co_await diagnoseApplication(each, shareable);
  around_.report.emit("=== end ===");
}

void CaptureDiagnostic::emitPermission() {
  const bool isGranted = around_.screenCapture.preflightAccess();
  around_.report.emit(
      fmt::format("Screen Recording permission (as seen by THIS process): {}", isGranted));
  if (isGranted) return;
  around_.report.emit("");
  for (const auto line : std::views::split(around_.texts.screenRecordingCaveat, '\n'))
    around_.report.emit(std::string_view(line));
}

Task<CaptureDiagnostic::Shareable> CaptureDiagnostic::shareableWindows() {
  using Listed = std::expected<Shareable, SystemError>;
  auto listed = co_await Answer<Listed>(inTime<Listed>(around_.mainQueue, [this](auto onWindows) {
    return around_.screenCapture.shareableWindows(std::move(onWindows));
  }));
  if (listed) co_return std::move(*listed);
  around_.report.emit("FAILED: could not list the windows on the screen, so none will match. " +
                      listed.error().sentence);
  co_return Shareable();
}

Task<> CaptureDiagnostic::diagnoseApplication(const RunningApplication& application,
                                              const Shareable& shareable) {
  const auto windows = co_await around_.axQueue.ax([&] {
    return TargetWindow::everyWindow(around_.accessibility, application.pid,
                                     AX::timeout::windowChange);
  });
  around_.report.emit(
      fmt::format("{}: {} AX window(s)", application.localizedName, windows ? windows->size() : 0));
  if (!windows) {
    around_.report.emit("  FAILED: AXWindows answers " + DiagnosticReport::fmt(windows.error()));
    co_return;
  }
  Shareable own;
  std::ranges::copy_if(shareable, std::back_inserter(own), [&](const ShareableWindow& window) {
    return window.owner == application.pid;
  });
  for (const auto& window : *windows) {
    const auto state = co_await around_.axQueue.ax([&] { return window.state(); });
    co_await diagnoseWindow(application.pid, state, own);
  }
}

Task<> CaptureDiagnostic::diagnoseWindow(ProcessID pid, const WindowState& window,
                                         const Shareable& shareable) {
  auto& report = around_.report;
  if (!window.frame) {
    report.emit(fmt::format("  '{}' [no frame]{}", window.title,
                            window.answers ? "" : ", its application does not answer"));
    co_return;
  }
  report.emit(fmt::format("  '{}' at {}{}", window.title, DiagnosticReport::fmt(*window.frame),
                          window.isMinimized ? ", minimized" : ""));
  const auto match = WindowCapture::bestMatch(shareable, window.title, *window.frame);
  if (!match) {
    report.emit(fmt::format("    NO MATCH for '{}'", window.title));
    co_return;
  }
  const auto title = match->title.value_or("");
  report.emit(fmt::format("    matched '{}'", title));
  if (title != window.title) report.emit("    *** TITLE MISMATCH ***");
  const auto picture = co_await windowCapture_.capture(pid, window.title, *window.frame);
  report.emit(picture ? "    captured " + DiagnosticReport::fmt(picture->size())
                      : "    CAPTURE FAILED: " + picture.error().sentence);
}

}  // namespace pellow
