#include "platforms/linux/x11/parking_guard.h"

#include <utility>

namespace pellow {

namespace {

constexpr Seconds serverPatience = 2;
constexpr Seconds timeToArrange = 3;

}  // namespace

void ParkingGuard::windowManagerChanged() {
  takeoverEnd_ = deadlineIn(timeToArrange);
  for (const auto& window : windowManager_.parkedWindows()) moved_.insert(window.window);
}

void ParkingGuard::handle(const xcb_generic_event_t& event) {
  if ((event.response_type & 0x7f) == XCB_CONFIGURE_NOTIFY)
    moved_.insert(reinterpret_cast<const xcb_configure_notify_event_t&>(event).window);
}

void ParkingGuard::dispatch() {
  const auto moved = std::exchange(moved_, {});
  if (moved.empty()) return;
  const bool isTakeover = std::chrono::steady_clock::now() < takeoverEnd_;
  const Deadline deadline = deadlineIn(serverPatience);
  for (const auto& window : windowManager_.parkedWindows()) {
    if (!moved.contains(window.window)) continue;
    isTakeover ? windowManager_.parkAgain(window, deadline)
               : windowManager_.noteParkedMoved(window, deadline);
  }
}

}  // namespace pellow
