#include "platforms/linux/x11/iconifier.h"

#include <algorithm>

namespace pellow {

namespace {

constexpr Seconds mapPatience = 0.1;
constexpr Seconds iconifyPatience = 1;

constexpr std::uint32_t iconicState = 3;

}  // namespace

std::expected<void, AXError> Iconifier::minimize(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return std::unexpected(facts.error());
  if (isMinimized(server_, facts->state, deadline)) return {};
  if (iconify({window}, deadline)) return {};
  // Undoes what has happened by now; the window's observers hear of what happens later.
  xcb_map_window(server_.connection().raw(), window.window);
  server_.connection().flush();
  return std::unexpected(AXError::cannotComplete);
}

std::expected<void, AXError> Iconifier::unminimize(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return std::unexpected(facts.error());
  if (!isMinimized(server_, facts->state, deadline)) return {};
  foreground_.bringToCurrentDesktop(*facts, deadline);
  if (!deiconify({window}, deadline)) return std::unexpected(AXError::cannotComplete);
  return {};
}

bool Iconifier::iconify(const std::vector<WindowKey>& windows, Deadline deadline) {
  for (const auto& window : windows) states_.unshade(window, deadline);
  for (const auto& window : windows)
    server_.connection().sendToWindowManager(window.window, server_.atoms().wmChangeState,
                                             {iconicState, 0, 0, 0, 0});
  return std::ranges::all_of(windows, [&](const WindowKey& window) {
    return waitForIconified(window, true, iconifyPatience, deadline);
  });
}

bool Iconifier::deiconify(const std::vector<WindowKey>& windows, Deadline deadline) {
  for (const auto& window : windows) xcb_map_window(server_.connection().raw(), window.window);
  bool all = true;
  for (const auto& window : windows) {
    if (waitForIconified(window, false, mapPatience, deadline)) continue;
    // A window that stayed mapped inside an unmapped frame hears nothing of being mapped.
    foreground_.activate(window.window);
    all &= waitForIconified(window, false, iconifyPatience, deadline);
  }
  for (const auto& window : windows) states_.shadeAgain(window, deadline);
  return all;
}

bool Iconifier::waitForIconified(const WindowKey& window, bool iconified, Seconds patience,
                                 Deadline deadline) {
  const auto isDone = [&](const WindowFacts& now) {
    return isIconified(server_, now.state, deadline) == iconified;
  };
  const auto facts =
      WindowWatch(server_, window).lookUntil(Facet::state, patience, deadline, isDone);
  return facts ? isDone(*facts) : facts.error() == AXError::invalidUIElement;
}

}  // namespace pellow
