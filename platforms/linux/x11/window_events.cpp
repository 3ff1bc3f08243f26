#include "platforms/linux/x11/window_events.h"

#include <utility>

namespace pellow {

Subscription WindowEvents::observe(xcb_window_t window, std::function<void()> changed) {
  if (selected_.insert(window).second) select(window);
  return observers_[window].add(std::move(changed));
}

void WindowEvents::select(xcb_window_t window) {
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
  const auto cookie =
      xcb_change_window_attributes_checked(events_.raw(), window, XCB_CW_EVENT_MASK, &mask);
  // Waits, so that no look at the window over another connection overtakes the selection. The
  // window may be gone; the look finds out.
  const Deadline deadline = server_.patience();
  (void)events_.check(cookie, deadline);
  if (hasPassed(deadline)) changed_.insert(window);
}

void WindowEvents::handle(const xcb_generic_event_t& event) {
  switch (event.response_type & 0x7f) {
    case XCB_DESTROY_NOTIFY: {
      const auto window = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
      changed_.insert(window);
      selected_.erase(window);  // another window may get its number
      break;
    }
    case XCB_UNMAP_NOTIFY:
      changed_.insert(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
      break;
    case XCB_MAP_NOTIFY:
      changed_.insert(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
      break;
    case XCB_PROPERTY_NOTIFY: {
      const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
      const auto& atoms = server_.atoms();
      for (const auto atom :
           {atoms.wmState, atoms.netWMState, atoms.netWMStrut, atoms.netWMStrutPartial})
        if (property.atom == atom) changed_.insert(property.window);
      break;
    }
    default:
      break;
  }
}

void WindowEvents::noteAll() {
  for (const auto& [window, observers] : observers_) changed_.insert(window);
}

void WindowEvents::dispatch() {
  if (!changed_.empty() && !server_.answers()) return;
  const Deadline deadline = server_.patience();
  const auto changed = std::exchange(changed_, {});
  for (const auto window : changed) {
    const auto found = observers_.find(window);
    if (found == observers_.end()) continue;
    // A copy shares the handlers: they may change the map.
    const auto observers = found->second;
    observers.notify();
  }
  // Some of them may not have found out what has changed.
  if (hasPassed(deadline)) changed_.insert(changed.begin(), changed.end());
  forgetUnobserved();
}

void WindowEvents::forgetUnobserved() {
  std::erase_if(observers_, [this](const auto& entry) {
    const auto& [window, observers] = entry;
    if (!observers.isEmpty()) return false;
    const std::uint32_t mask = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(events_.raw(), window, XCB_CW_EVENT_MASK, &mask);
    selected_.erase(window);
    return true;
  });
}

}  // namespace pellow
