#include "tests/linux/monitors.h"

#include <sys/uio.h>
#include <xcb/xcbext.h>

#include <array>

namespace pellow::desktop {

Monitors::Monitors(const std::string& display) : connection_(X11Connection::open(display).value()) {
  auto pending = connection_->pending<xcb_randr_get_screen_resources_reply_t>(
      xcb_randr_get_screen_resources(connection_->raw(), connection_->root()));
  const auto resources = pending.collect(deadlineIn(10)).value();
  output_ = *xcb_randr_get_screen_resources_outputs(resources.get());
}

void Monitors::plug(const std::string& name, PixelRect place, bool isPrimary, bool isFirst) {
  // The request as the protocol has it: the function of the library miscounts its length.
  struct {
    xcb_randr_set_monitor_request_t request{};
    xcb_randr_monitor_info_t info{};
    xcb_randr_output_t output = 0;
  } plugged;
  plugged.request.window = connection_->root();
  plugged.info.name = internAtom(connection_->raw(), name);
  plugged.info.primary = isPrimary;
  plugged.info.nOutput = isFirst ? 1 : 0;
  plugged.info.x = static_cast<std::int16_t>(place.x);
  plugged.info.y = static_cast<std::int16_t>(place.y);
  plugged.info.width = static_cast<std::uint16_t>(place.width);
  plugged.info.height = static_cast<std::uint16_t>(place.height);
  plugged.output = output_;
  const auto length = sizeof plugged - (isFirst ? 0 : sizeof plugged.output);
  // The library needs room for two parts of its own.
  std::array<iovec, 3> parts{{{}, {}, {&plugged, length}}};
  const xcb_protocol_request_t protocol{1, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
  xcb_send_request(connection_->raw(), 0, &parts[2], &protocol);
  connection_->flush();
}

void Monitors::unplug(const std::string& name) {
  xcb_randr_delete_monitor(connection_->raw(), connection_->root(),
                           internAtom(connection_->raw(), name));
  connection_->flush();
}

}  // namespace pellow::desktop
