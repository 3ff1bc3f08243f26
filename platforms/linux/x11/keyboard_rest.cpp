#include "platforms/linux/x11/keyboard_rest.h"

namespace pellow {

void KeyboardRest::take() {
  if (window_ == XCB_WINDOW_NONE) window_ = makeWindow();
  auto& connection = server_.connection();
  xcb_set_input_focus(connection.raw(), XCB_INPUT_FOCUS_PARENT, window_, XCB_CURRENT_TIME);
  connection.flush();
}

// It must be mapped to have the keyboard.
xcb_window_t KeyboardRest::makeWindow() {
  auto& connection = server_.connection();
  const auto window = xcb_generate_id(connection.raw());
  const std::uint32_t isUnmanaged = 1;
  xcb_create_window(connection.raw(), XCB_COPY_FROM_PARENT, window, connection.root(), -1, -1, 1, 1,
                    0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                    &isUnmanaged);
  xcb_map_window(connection.raw(), window);
  return window;
}

}  // namespace pellow
