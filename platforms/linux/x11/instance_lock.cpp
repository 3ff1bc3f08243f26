#include "platforms/linux/x11/instance_lock.h"

#include <algorithm>
#include <string>

namespace pellow {

InstanceLock::InstanceLock(X11Connection& connection)
    : connection_(connection),
      selection_(internAtom(connection.raw(),
                            "_PELLOW_INSTANCE_S" + std::to_string(connection.screenNumber()))),
      window_(xcb_generate_id(connection.raw())) {
  xcb_create_window(connection.raw(), 0, window_, connection.root(), 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
}

std::expected<xcb_window_t, SystemError> InstanceLock::claimOrFindOwner(Deadline deadline) {
  auto* raw = connection_.raw();
  // Nobody else can claim between the answer and the claim.
  xcb_grab_server(raw);
  auto question = connection_.pending<xcb_get_selection_owner_reply_t>(
      xcb_get_selection_owner(raw, selection_));
  const auto answer = question.collect(deadline);
  const bool isFree = answer && (*answer)->owner == XCB_WINDOW_NONE;
  if (isFree) xcb_set_selection_owner(raw, window_, selection_, XCB_CURRENT_TIME);
  xcb_ungrab_server(raw);
  connection_.flush();
  if (!answer)
    return std::unexpected(
        SystemError{"The X server did not answer whether another Pellow runs on this display: "
                    "start Pellow again."});
  return isFree ? window_ : (*answer)->owner;
}

std::expected<void, SystemError> InstanceLock::claim() {
  const auto owner = claimOrFindOwner(deadlineIn(serverPatience));
  if (!owner) return std::unexpected(owner.error());
  if (*owner == window_) return {};
  return std::unexpected(
      SystemError{"Another Pellow runs on this display already: quit it first."});
}

std::expected<void, SystemError> InstanceLock::wait(Seconds timeout) {
  const Deadline deadline = deadlineIn(timeout);
  for (;;) {
    const auto owner = claimOrFindOwner(std::max(deadline, deadlineIn(serverPatience)));
    if (!owner) return std::unexpected(owner.error());
    if (*owner == window_) return {};
    if (!awaitEndOf(*owner, deadline) && !connection_.isLost())
      return std::unexpected(SystemError{
          "The Pellow that started this one has not ended: quit it and start Pellow again."});
  }
}

// The owner's window goes with its connection.
bool InstanceLock::awaitEndOf(xcb_window_t owner, Deadline deadline) {
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_.raw(), owner, XCB_CW_EVENT_MASK, &mask);
  while (const auto event = connection_.waitForEvent(deadline)) {
    // One that is already gone answers with an error.
    const auto type = event->response_type & 0x7f;
    if (type == 0) return true;
    if (type == XCB_DESTROY_NOTIFY &&
        reinterpret_cast<const xcb_destroy_notify_event_t&>(*event).window == owner)
      return true;
  }
  return false;
}

}  // namespace pellow
