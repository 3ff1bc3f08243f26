#include "tests/harness/monitors.h"

#include <sys/uio.h>
#include <xcb/xcbext.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace pellow::desktop {
namespace {

template <class Reply>
std::unique_ptr<Reply, decltype(&std::free)> checked(Reply* reply) {
  if (!reply) throw std::runtime_error("the server has no monitors");
  return {reply, std::free};
}

}  // namespace

Monitors::Monitors(const std::string& display)
    : connection_(xcb_connect(display.c_str(), nullptr), xcb_disconnect),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root) {
  const auto resources = checked(xcb_randr_get_screen_resources_reply(
      connection_.get(), xcb_randr_get_screen_resources(connection_.get(), root_), nullptr));
  const auto* pictures = xcb_randr_get_screen_resources_crtcs(resources.get());
  for (int index = 0; index < resources->num_crtcs; ++index)
    switchOff(pictures[index], resources->config_timestamp);
}

void Monitors::switchOff(xcb_randr_crtc_t picture, xcb_timestamp_t configured) {
  checked(xcb_randr_set_crtc_config_reply(
      connection_.get(),
      xcb_randr_set_crtc_config(connection_.get(), picture, XCB_CURRENT_TIME, configured, 0, 0,
                                XCB_NONE, XCB_RANDR_ROTATION_ROTATE_0, 0, nullptr),
      nullptr));
}

void Monitors::plug(const std::string& name, PixelRect place, bool isPrimary) {
  // The request as in the protocol: the library's function miscounts its length.
  struct {
    xcb_randr_set_monitor_request_t request{};
    xcb_randr_monitor_info_t info{};
  } plugged;
  plugged.request.window = root_;
  plugged.info.name = atom(name);
  plugged.info.primary = isPrimary;
  plugged.info.x = static_cast<std::int16_t>(place.x);
  plugged.info.y = static_cast<std::int16_t>(place.y);
  plugged.info.width = static_cast<std::uint16_t>(place.width);
  plugged.info.height = static_cast<std::uint16_t>(place.height);
  // The library needs room for two parts of its own.
  std::array<iovec, 3> parts{{{}, {}, {&plugged, sizeof plugged}}};
  const xcb_protocol_request_t protocol{1, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
  // A known monitor must be removed first; the grab keeps others from seeing it gone.
  xcb_grab_server(connection_.get());
  unplug(name);
  xcb_send_request(connection_.get(), 0, &parts[2], &protocol);
  xcb_ungrab_server(connection_.get());
  xcb_flush(connection_.get());
}

void Monitors::unplug(const std::string& name) {
  xcb_randr_delete_monitor(connection_.get(), root_, atom(name));
  xcb_flush(connection_.get());
}

void Monitors::resizeScreen(int width, int height) {
  const auto size = [](int pixels) { return static_cast<std::uint16_t>(pixels); };
  const auto millimetres = [](int pixels) {
    return static_cast<std::uint32_t>(pixels * 254 / 960);
  };
  xcb_randr_set_screen_size(connection_.get(), root_, size(width), size(height), millimetres(width),
                            millimetres(height));
  xcb_flush(connection_.get());
}

xcb_atom_t Monitors::atom(const std::string& name) const {
  const auto cookie =
      xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
  return checked(xcb_intern_atom_reply(connection_.get(), cookie, nullptr))->atom;
}

}  // namespace pellow::desktop
