#pragma once

#include <optional>

#include "platforms/linux/x11/x11_connection.h"

namespace pellow {

// Another client may have grabbed the server; until it lets go, nobody else is answered, and the
// main loop must not wait for that. So the first question of the main thread that meets silence
// begins a hold: from then on its questions fail at once. One last question, on the connection of
// the events, ends it when it is answered, and wakes the main loop. Main thread.
class ServerHold {
 public:
  // How long a server that nobody has grabbed may say nothing.
  static constexpr Seconds patience = 0.03;

  explicit ServerHold(X11Connection& events) : events_(events) {}

  // Whether somebody has the server, as far as is known by now.
  bool isOn();

  // A question was not answered.
  void noteUnanswered();
  unsigned unanswered() const { return unanswered_; }

 private:
  X11Connection& events_;
  std::optional<PendingReply<xcb_get_input_focus_reply_t>> lastQuestion_;
  unsigned unanswered_ = 0;
};

}  // namespace pellow
