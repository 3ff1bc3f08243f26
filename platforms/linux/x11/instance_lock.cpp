#include "platforms/linux/x11/instance_lock.h"

#include <string>

namespace pellow {

namespace {

constexpr Seconds serverPatience = 2;

}  // namespace

InstanceLock::InstanceLock(X11Connection& connection)
    : connection_(connection),
      selection_(internAtom(connection.raw(),
                            "_PELLOW_INSTANCE_S" + std::to_string(connection.screenNumber()))),
      window_(xcb_generate_id(connection.raw())) {
  xcb_create_window(connection.raw(), 0, window_, connection.root(), 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
}

InstanceLock::Owner InstanceLock::claimOrFindOwner() {
  auto* raw = connection_.raw();
  const auto askOwner = [&] {
    auto pending = connection_.pending<xcb_get_selection_owner_reply_t>(
        xcb_get_selection_owner(raw, selection_));
    const auto reply = pending.collect(deadlineIn(serverPatience));
    return reply ? (*reply)->owner : XCB_WINDOW_NONE;
  };
  // Nobody else can claim between the question and the claim.
  xcb_grab_server(raw);
  xcb_window_t owner = askOwner();
  if (owner == XCB_WINDOW_NONE) {
    xcb_set_selection_owner(raw, window_, selection_, XCB_CURRENT_TIME);
    owner = askOwner();
  }
  xcb_ungrab_server(raw);
  connection_.flush();
  return {.isOurs = owner == window_, .window = owner};
}

bool InstanceLock::claim() { return claimOrFindOwner().isOurs; }

bool InstanceLock::wait(Seconds timeout) {
  const Deadline deadline = deadlineIn(timeout);
  for (;;) {
    const auto owner = claimOrFindOwner();
    if (owner.isOurs) return true;
    if (connection_.isLost()) return false;
    // The owner's window goes with its connection. One that has gone already answers with an error,
    // which wakes us as well.
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.raw(), owner.window, XCB_CW_EVENT_MASK, &mask);
    if (!connection_.waitForEvent(deadline)) return false;
  }
}

}  // namespace pellow
