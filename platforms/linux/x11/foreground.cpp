#include "platforms/linux/x11/foreground.h"

#include "platforms/linux/x11/source_indication.h"

namespace pellow {

namespace {

constexpr Seconds activatePatience = 1;

}  // namespace

std::expected<void, AXError> Foreground::raise(const WindowKey& window, Deadline deadline) {
  const auto facts = look(server_, window, Facet::state, deadline);
  if (!facts) return std::unexpected(facts.error());
  bringToCurrentDesktop(*facts, deadline);
  auto& connection = server_.connection();
  if (server_.windowManagerSupports(server_.atoms().netRestackWindow)) {
    connection.sendToWindowManager(window.window, server_.atoms().netRestackWindow,
                                   {sourcePager, XCB_WINDOW_NONE, XCB_STACK_MODE_ABOVE, 0, 0});
  } else {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection.raw(), window.window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
  }
  connection.flush();
  return {};
}

void Foreground::activate(xcb_window_t window) {
  auto& connection = server_.connection();
  const auto facts = WindowLook(server_, connection, window, Facet::state)
                         .collect(server_.patience(activatePatience));
  connection.sendToWindowManager(window, server_.atoms().netActiveWindow,
                                 {sourcePager, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0});
  // Many window managers unshade what they activate.
  if (facts && facts->state.shaded) states_.askToTakeUp(*facts, {LeftState::shaded});
  connection.flush();
}

void Foreground::bringToCurrentDesktop(const WindowFacts& window, Deadline deadline) {
  const auto desktop = currentDesktop(server_, deadline);
  if (window.state.isOn(desktop)) return;
  server_.connection().sendToWindowManager(window.window, server_.atoms().netWMDesktop,
                                           {desktop, sourcePager, 0, 0, 0});
}

}  // namespace pellow
