#include "platforms/linux/x11/server_hold.h"

namespace pellow {

bool ServerHold::isOn() {
  if (!lastQuestion_ || !lastQuestion_->hasBeenAnswered()) return lastQuestion_.has_value();
  lastQuestion_.reset();
  // The answer has left the socket that the main loop waits for.
  events_.signalEvent();
  return false;
}

void ServerHold::noteUnanswered() {
  ++unanswered_;
  if (lastQuestion_) return;
  lastQuestion_.emplace(
      events_.pending<xcb_get_input_focus_reply_t>(xcb_get_input_focus(events_.raw())));
  events_.flush();
}

}  // namespace pellow
