#include "engine/focus_handover.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace pellow {
namespace {

// How long a desktop may take to move the keyboard, and how often to look.
constexpr Seconds patience = 0.5;
constexpr Seconds pause = 0.005;

// The windows of an application that stand there.
std::vector<TargetWindow> windowsAt(Accessibility& accessibility, const WindowOnScreen& place) {
  auto windows = TargetWindow::windows(accessibility, place.owner);
  std::erase_if(windows, [&](const TargetWindow& window) {
    const auto state = window.state();
    return state.isMinimized || state.frame != place.frame;
  });
  return windows;
}

}  // namespace

Task<> FocusHandover::handOver() {
  if (!co_await isKeyboardOffDisplays()) co_return;
  const auto next = co_await firstInSight();
  // Meanwhile the user may have turned to something else.
  if (!co_await isKeyboardOffDisplays()) co_return;
  around_.echoes.suppressActivationAtLeast(EchoGuard::ownEcho);
  if (!next) co_return around_.workspace.activateDesktop();
  co_await around_.mechanisms.bringToFront(*next);
  // Whoever asks next for the window with the keyboard means this one. On its way there the
  // keyboard may be nowhere.
  const auto deadline = around_.clock.now() + patience;
  while (co_await focusedWindow() != next && around_.clock.now() < deadline)
    co_await around_.axQueue.ax([&] { around_.clock.sleep(pause); });
}

Task<std::optional<TargetWindow>> FocusHandover::focusedWindow() {
  const auto front = around_.workspace.frontmostApplication();
  if (front == around_.ownProcess) co_return std::nullopt;
  co_return co_await around_.axQueue.ax(
      [&] { return TargetWindow::frontmost(around_.accessibility, front); });
}

Task<bool> FocusHandover::isKeyboardOffDisplays() {
  const auto isOffDisplays = [this](auto matches) {
    return std::ranges::any_of(around_.tabs.tabs(), [&](const TabItem& tab) {
      return tab.mechanism == Mechanism::offscreen && matches(tab.window);
    });
  };
  const auto front = around_.workspace.frontmostApplication();
  // Most often that tells it without a question to the application.
  if (!isOffDisplays([&](const TargetWindow& window) { return window.pid == front; }))
    co_return false;
  const auto focused = co_await focusedWindow();
  co_return focused.has_value() &&
      isOffDisplays([&](const TargetWindow& window) { return window == *focused; });
}

Task<std::optional<TargetWindow>> FocusHandover::firstInSight() {
  for (const auto& place : around_.workspace.windowsOnScreen()) {
    if (place.owner == around_.ownProcess || around_.displays.isHidden(place.frame)) continue;
    const auto windows =
        co_await around_.axQueue.ax([&] { return windowsAt(around_.accessibility, place); });
    for (const auto& window : windows)
      if (!around_.tabs.contains(window) && !around_.ledger.contains(window)) co_return window;
  }
  co_return std::nullopt;
}

}  // namespace pellow
