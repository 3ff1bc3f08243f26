#pragma once

#include <functional>
#include <vector>

#include "base/log.h"
#include "base/subscription.h"
#include "platform/event_monitors.h"
#include "shortcuts/shortcut_action.h"
#include "shortcuts/shortcut_store.h"

namespace pellow {

// Watches every key press, in other applications and in the program's own windows, and calls its
// handler when one is bound to an action. The key press still reaches the application it was meant
// for. Main thread.
class HotkeyManager {
 public:
  HotkeyManager(EventMonitors& eventMonitors, const ShortcutStore& shortcuts, const Log& log)
      : eventMonitors_(eventMonitors), shortcuts_(shortcuts), log_(log) {}

  // What to do when a shortcut fires; runs inside the event monitor.
  std::function<void(ShortcutAction)> handler;

  // A second start still leaves one pair of monitors. One that the system refuses is left out.
  void start();
  void stop();

 private:
  void dispatch(const KeyEvent& event);

  EventMonitors& eventMonitors_;
  const ShortcutStore& shortcuts_;
  const Log& log_;
  std::vector<Subscription> monitors_;
};

}  // namespace pellow
