#include "platforms/linux/x11/frame_mover.h"

#include <algorithm>
#include <array>

#include "base/subscription.h"
#include "platforms/linux/x11/source_indication.h"

namespace pellow {

namespace {

constexpr Seconds promptPatience = 0.02;

}  // namespace

std::expected<FrameMover::Moved, AXError> FrameMover::move(const WindowFacts& window,
                                                           PixelPoint target, Deadline deadline) {
  auto moved = askAndLook(window, target, deadline);
  if (!moved || moved->facts.frame.origin() == target) return moved;

  auto& facts = moved->facts;
  const auto layout = server_.layout();
  const bool leaves = !layout.showsMostOf(facts.frame.at(target));
  const bool isAway = !layout.showsMostOf(facts.frame);
  if (!leaves && !isAway) return moved;
  if (const auto pushed = push(facts, target, deadline); !pushed)
    return std::unexpected(pushed.error());
  const int dx = target.x - facts.frame.x;
  const int dy = target.y - facts.frame.y;
  facts.content = facts.content.at({facts.content.x + dx, facts.content.y + dy});
  facts.outerCorner = {facts.outerCorner.x + dx, facts.outerCorner.y + dy};
  facts.frame = facts.frame.at(target);
  return moved;
}

// Most moves are done at once, and the first event tells of them.
std::expected<FrameMover::Moved, AXError> FrameMover::askAndLook(const WindowFacts& window,
                                                                 PixelPoint target,
                                                                 Deadline deadline) {
  WindowWatch watch(server_, window.key());
  ask(window, target);
  const Deadline prompt = deadline.orIn(promptPatience);
  const auto hasMoved = [&](const WindowFacts& now) {
    return now.frame.origin() != window.frame.origin();
  };
  while (watch.wait(prompt)) {
    auto facts = look(server_, window.key(), placeFacets, deadline);
    if (!facts) return std::unexpected(facts.error());
    // Wherever it went, that is as far as the window manager lets it.
    if (hasMoved(*facts)) return Moved{std::move(*facts)};
  }
  auto facts = watch.lookAfterManagerActed(
      deadline, [&](const WindowFacts& now) { return now.frame.origin() == target; });
  if (!facts) return std::unexpected(facts.error());
  const bool isManagerLate = !watch.hasManagerActed() && !hasMoved(*facts);
  return Moved{std::move(*facts), isManagerLate};
}

// The place of the outer corner: window managers agree best on this gravity. The size goes along
// only where it must, as an application may be changing it.
void FrameMover::ask(const WindowFacts& window, PixelPoint target) {
  constexpr std::uint32_t gravity = XCB_GRAVITY_NORTH_WEST;
  constexpr std::uint32_t hasPlace = 3u << 8;
  constexpr std::uint32_t hasPlaceAndSize = 15u << 8;
  const auto has = server_.windowManager().growsOnMoves ? hasPlaceAndSize : hasPlace;
  const int x = window.outerCorner.x + target.x - window.frame.x;
  const int y = window.outerCorner.y + target.y - window.frame.y;
  server_.connection().sendToWindowManager(
      window.window, server_.atoms().netMoveResizeWindow,
      {gravity | has | sourcePager << 12, static_cast<std::uint32_t>(x),
       static_cast<std::uint32_t>(y), static_cast<std::uint32_t>(window.content.width),
       static_cast<std::uint32_t>(window.content.height)});
}

// Window managers keep part of a window on the screen, some of them a large one. So the frame, or
// the client itself where it has none, is moved past them: the server redirects to the window
// manager only what is done to windows without this flag. The window manager believes the window to
// be where it allowed it, and brings it back from there like any other.
std::expected<void, AXError> FrameMover::push(const WindowFacts& window, PixelPoint target,
                                              Deadline deadline) {
  const bool isFramed = window.parent != server_.connection().root();
  const auto frameWindow =
      isFramed ? outermostWindow(server_, window.parent, deadline) : window.window;
  if (!frameWindow) return std::unexpected(frameWindow.error());
  auto& connection = server_.connection();
  // A late window manager may move the window right now; nothing may come between the look and the
  // move.
  xcb_grab_server(connection.raw());
  const Subscription release([&] {
    xcb_ungrab_server(connection.raw());
    connection.flush();
  });
  auto pending = connection.pending<xcb_get_geometry_reply_t>(
      xcb_get_geometry(connection.raw(), *frameWindow));
  const auto now = WindowLook(server_, connection, window.window, Facet::frame).collect(deadline);
  if (!now) return std::unexpected(now.error());
  // Another window manager has framed it meanwhile, or none does any more: its former outermost
  // window may now be inside a frame.
  if (now->parent != window.parent) return push(*now, target, deadline);
  const auto geometry = pending.collect(deadline);
  if (!geometry) return std::unexpected(geometry.error());
  if (now->frame.origin() == target) return {};

  const std::array<std::int32_t, 2> place{(*geometry)->x + target.x - now->frame.x,
                                          (*geometry)->y + target.y - now->frame.y};
  const auto setBypass = [&](std::uint32_t bypass) {
    xcb_change_window_attributes(connection.raw(), *frameWindow, XCB_CW_OVERRIDE_REDIRECT, &bypass);
  };
  setBypass(1);
  xcb_configure_window(connection.raw(), *frameWindow, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
                       place.data());
  setBypass(0);
  return {};
}

}  // namespace pellow
