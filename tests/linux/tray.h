#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "platforms/linux/x11/x11_connection.h"
#include "tests/harness/desktop_session.h"

namespace pellow::desktop {

// A bar at the bottom of the screen with the smallest tray there can be: one place for an icon.
class Tray {
 public:
  static constexpr PixelRect bar{0, 760, 1280, 40};
  static constexpr PixelRect icon{1200, 768, 24, 24};

  Tray(const std::string& display, std::uint32_t colour)
      : connection_(X11Connection::open(display).value()), window_(xcb_generate_id(raw())) {
    const std::uint32_t values[] = {colour, 1};
    xcb_create_window(raw(), XCB_COPY_FROM_PARENT, window_, connection_->root(), bar.x, bar.y,
                      bar.width, bar.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(raw(), window_);
    const auto selection = internAtom(raw(), "_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(raw(), window_, selection, XCB_CURRENT_TIME);
    tell(connection_->root(), "MANAGER", {.data32 = {0, selection, window_}},
         XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    connection_->flush();
  }

  // Docks whatever icon asks.
  void work() {
    while (auto* const event = xcb_poll_for_event(raw())) {
      const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> owner(event, std::free);
      if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE) continue;
      const auto& message = *reinterpret_cast<const xcb_client_message_event_t*>(event);
      if (message.type != internAtom(raw(), "_NET_SYSTEM_TRAY_OPCODE")) continue;
      docked_ = message.data.data32[2];
      const std::uint32_t size[] = {icon.width, icon.height};
      xcb_configure_window(raw(), docked_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                           size);
      xcb_reparent_window(raw(), docked_, window_, icon.x - bar.x, icon.y - bar.y);
      xcb_map_window(raw(), docked_);
      tell(docked_, "_XEMBED", {.data32 = {0, 0, 0, window_}}, XCB_EVENT_MASK_NO_EVENT);
      connection_->flush();
    }
  }

  // Another colour from now on.
  void paint(std::uint32_t colour) {
    xcb_change_window_attributes(raw(), window_, XCB_CW_BACK_PIXEL, &colour);
    xcb_clear_area(raw(), 0, window_, 0, 0, 0, 0);
    connection_->flush();
  }

  WindowID docked() const { return docked_; }

 private:
  xcb_connection_t* raw() const { return connection_->raw(); }

  void tell(xcb_window_t window, const char* type, xcb_client_message_data_t data,
            std::uint32_t mask) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = internAtom(raw(), type);
    message.data = data;
    xcb_send_event(raw(), 0, window, mask, reinterpret_cast<const char*>(&message));
  }

  std::unique_ptr<X11Connection> connection_;
  xcb_window_t window_;
  WindowID docked_ = 0;
};

}  // namespace pellow::desktop
