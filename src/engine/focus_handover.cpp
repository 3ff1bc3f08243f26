#include "engine/focus_handover.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace pellow {
namespace {

// How long a desktop may take to move the keyboard, and how often to look.
constexpr Seconds patience = 0.5;
constexpr Seconds pauseTime = 0.005;

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
  auto deadline = around_.clock.now() + patience;
  while (co_await systemMovesIt() && around_.clock.now() < deadline) co_await pause();
  if (!co_await isKeyboardOffDisplays()) co_return;
  const auto next = co_await firstInSight();
  // Meanwhile the user may have turned to something else.
  if (!co_await isKeyboardOffDisplays()) co_return;
  around_.echoes.suppressActivationAtLeast(EchoGuard::ownEcho);
  if (!next) co_return around_.workspace.activateDesktop();
  co_await around_.mechanisms.bringToFront(*next);
  // Whoever asks next for the window with the keyboard means this one. On its way there the
  // keyboard may be nowhere.
  deadline = around_.clock.now() + patience;
  while (co_await focusedWindow() != next && around_.clock.now() < deadline) co_await pause();
}

// The system takes the keyboard from a window that it minimizes, in its own time. Meanwhile it may
// be nowhere.
Task<bool> FocusHandover::systemMovesIt() {
  const auto& tabs = around_.tabs.tabs();
  if (tabs.empty() || tabs.back().mechanism != Mechanism::minimize) co_return false;
  if (const auto focused = co_await focusedWindow())
    co_return mechanismOf(*focused) == Mechanism::minimize;
  co_return (co_await firstInSight()).has_value();
}

Task<std::optional<TargetWindow>> FocusHandover::focusedWindow() {
  const auto front = around_.workspace.frontmostApplication();
  if (front == around_.ownProcess) co_return std::nullopt;
  co_return co_await around_.axQueue.ax(
      [&] { return TargetWindow::frontmost(around_.accessibility, front); });
}

Task<bool> FocusHandover::isKeyboardOffDisplays() {
  const auto front = around_.workspace.frontmostApplication();
  // Most often that tells it without a question to the application.
  const auto& tabs = around_.tabs.tabs();
  if (std::ranges::none_of(tabs, [&](const auto& tab) { return tab.window.pid == front; }))
    co_return false;
  const auto focused = co_await focusedWindow();
  if (!focused) co_return false;
  co_return mechanismOf(*focused) == Mechanism::offscreen;
}

std::optional<Mechanism> FocusHandover::mechanismOf(const TargetWindow& window) const {
  const auto& tabs = around_.tabs.tabs();
  const auto tab = std::ranges::find(tabs, window, &TabItem::window);
  return tab == tabs.end() ? std::nullopt : std::optional(tab->mechanism);
}

Task<> FocusHandover::pause() {
  co_await around_.axQueue.ax([&] { around_.clock.sleep(pauseTime); });
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
