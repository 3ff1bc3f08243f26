#include "platforms/linux/x11/window_manager_question.h"

namespace pellow {

namespace {

constexpr Seconds catchUpPatience = 5;

}  // namespace

std::unique_ptr<WindowManagerQuestion> WindowManagerQuestion::aboutFrame(X11Server& server) {
  auto& connection = server.connection();
  std::unique_ptr<WindowManagerQuestion> question(new WindowManagerQuestion(connection));
  connection.sendToWindowManager(question->window_, server.atoms().netRequestFrameExtents, {});
  return question;
}

std::unique_ptr<WindowManagerQuestion> WindowManagerQuestion::aboutSize(X11Server& server) {
  auto& connection = server.connection();
  std::unique_ptr<WindowManagerQuestion> question(new WindowManagerQuestion(connection));
  const std::uint32_t width = 2;
  xcb_configure_window(connection.raw(), question->window_, XCB_CONFIG_WINDOW_WIDTH, &width);
  connection.flush();
  return question;
}

WindowManagerQuestion::WindowManagerQuestion(X11Connection& connection)
    : connection_(connection), window_(xcb_generate_id(connection.raw())) {
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_create_window(connection_.raw(), XCB_COPY_FROM_PARENT, window_, connection_.root(), 0, 0, 1,
                    1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                    &mask);
}

WindowManagerQuestion::~WindowManagerQuestion() { xcb_destroy_window(connection_.raw(), window_); }

bool WindowManagerQuestion::isAnsweredBy(const xcb_generic_event_t& event) const {
  switch (event.response_type & 0x7f) {
    case XCB_PROPERTY_NOTIFY:
      return reinterpret_cast<const xcb_property_notify_event_t&>(event).window == window_;
    case XCB_CONFIGURE_NOTIFY:
      return reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == window_;
    default:
      return false;
  }
}

void awaitWindowManager(X11Server& server) {
  auto& connection = server.connection();
  connection.dropEvents();
  const auto question = WindowManagerQuestion::aboutSize(server);
  const Deadline deadline = deadlineIn(catchUpPatience);
  while (const auto event = connection.waitForEvent(deadline))
    if (question->isAnsweredBy(*event)) break;
}

}  // namespace pellow
