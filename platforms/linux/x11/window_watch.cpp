#include "platforms/linux/x11/window_watch.h"

#include <algorithm>
#include <optional>

namespace pellow {

WindowWatch::WindowWatch(X11Server& server, const WindowKey& window)
    : server_(server), connection_(server.connection()), window_(window) {
  const auto parent = server.lastParent(window.window);
  if (parent != connection_.root()) frame_ = parent;
  connection_.dropEvents();
  select(window_.window, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
  // Not the children of the root: the server would visit every window on the screen.
  if (frame_) select(frame_, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
}

WindowWatch::~WindowWatch() {
  select(window_.window, XCB_EVENT_MASK_NO_EVENT);
  if (frame_) select(frame_, XCB_EVENT_MASK_NO_EVENT);
  question_.reset();
  connection_.flush();
  connection_.dropEvents();
}

bool WindowWatch::wait(Deadline deadline) {
  while (auto event = connection_.waitForEvent(deadline)) {
    bool isChange = false;
    for (; event; event = connection_.pollForEvent()) isChange |= take(*event);
    if (isChange) return true;
  }
  return false;
}

std::expected<WindowFacts, AXError> WindowWatch::lookUntil(Facet facets, Seconds patience,
                                                           Deadline deadline,
                                                           const Condition& condition) {
  std::optional<Deadline> end;
  for (;;) {
    auto facts = look(server_, window_, facets, deadline);
    if (!facts || condition(*facts)) return facts;
    if (!end) end = deadline.orIn(patience);
    if (!wait(*end)) return facts;
  }
}

std::expected<WindowFacts, AXError> WindowWatch::lookAfterManagerActed(Deadline deadline,
                                                                       const Condition& isDone) {
  if (server_.windowManagerSupports(server_.atoms().netRequestFrameExtents))
    question_ = WindowManagerQuestion::aboutFrame(server_);
  // Its time starts when it has the request: the server may keep everybody waiting.
  std::optional<Deadline> end;
  for (;;) {
    const bool isAnswered = isAnswered_;
    auto facts = look(server_, window_, placeFacets, deadline);
    if (!facts || isAnswered || isDone(*facts)) return facts;
    if (!end) end = deadline.orIn(stepPatience);
    if (!wait(*end)) return facts;
  }
}

void WindowWatch::select(xcb_window_t window, std::uint32_t mask) {
  xcb_change_window_attributes(connection_.raw(), window, XCB_CW_EVENT_MASK, &mask);
}

bool WindowWatch::take(const xcb_generic_event_t& event) {
  const auto type = event.response_type & 0x7f;
  if (question_ && question_->isAnsweredBy(event)) return isAnswered_ = true;
  // The window is gone, or something of it has changed.
  if (type == 0 || type == XCB_PROPERTY_NOTIFY) return true;
  // All structure events begin alike.
  const auto& structure = reinterpret_cast<const xcb_unmap_notify_event_t&>(event);
  return structure.window == window_.window || structure.window == frame_;
}

}  // namespace pellow
