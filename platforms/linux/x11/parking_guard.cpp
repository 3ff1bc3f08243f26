#include "platforms/linux/x11/parking_guard.h"

#include <utility>

namespace pellow {

namespace {

constexpr Seconds timeToArrange = 3;

}  // namespace

void ParkingGuard::arrangementBegins() {
  arrangementEnd_ = deadlineIn(timeToArrange);
  for (const auto& parked : frames_.all()) moved_.insert(parked.key.window);
}

void ParkingGuard::handle(const xcb_generic_event_t& event) {
  if ((event.response_type & 0x7f) != XCB_CONFIGURE_NOTIFY) return;
  const auto& configure = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
  moved_.insert(configure.window);
  // A window manager's own events say where on the screen a window is: mostly where it was put.
  const bool isOfWindowManager = event.response_type & 0x80;
  const PixelRect place{configure.x, configure.y, configure.width, configure.height};
  if (!isOfWindowManager || server_.layout().showsMostOf(place))
    perhapsBack_.insert(configure.window);
}

void ParkingGuard::dispatch() {
  if (moved_.empty() || !server_.answers()) return;
  const auto moved = std::exchange(moved_, {});
  const auto perhapsBack = std::exchange(perhapsBack_, {});
  const bool isArranged = !hasPassed(arrangementEnd_);
  const Deadline deadline = server_.patience();
  for (const auto& [window, isManagerLate] : frames_.all()) {
    const auto& concerned = isArranged || isManagerLate ? moved : perhapsBack;
    if (!concerned.contains(window.window)) continue;
    isArranged ? frames_.parkAgain(window, deadline) : frames_.noteMoved(window, deadline);
  }
  if (!hasPassed(deadline)) return;
  moved_.insert(moved.begin(), moved.end());
  perhapsBack_.insert(perhapsBack.begin(), perhapsBack.end());
}

}  // namespace pellow
