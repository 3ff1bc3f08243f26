#pragma once

#include "access/ax_queue.h"
#include "access/displays.h"
#include "access/target_window.h"
#include "base/log.h"
#include "base/task.h"
#include "base/uuid.h"
#include "engine/departures.h"
#include "engine/echo_guard.h"
#include "engine/late_minimizes.h"
#include "engine/ledger.h"
#include "engine/minimize_watcher.h"
#include "engine/returns.h"
#include "model/preferences.h"
#include "model/tab_store.h"
#include "platform/accessibility.h"
#include "platform/workspace.h"

namespace pellow {

// What the engine does by itself when something happens in other applications: a minimized window
// becomes a tab, and a tab comes back when its window is chosen from its application, or when its
// application becomes active with nothing else to show. Main thread.
class AutomaticTriggers {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    Departures& departures;
    const Displays& displays;
    EchoGuard& echoes;
    LateMinimizes& lateMinimizes;
    const Ledger& ledger;
    const Log& log;
    const Preferences& preferences;
    Returns& returns;
    const TabStore& store;
    TaskScope& tasks;
    Workspace& workspace;
    ProcessID ownProcess;
  };

  explicit AutomaticTriggers(const Surroundings& surroundings);

  // Begins to follow applications; or again, when tasks have been ended that were to follow some.
  void start();

  // Another application became active.
  void appActivated(ProcessID pid);

 private:
  Task<> tellOfWatching();
  void windowWasMinimized(const TargetWindow& window);
  void windowWasFocused(const TargetWindow& window);
  bool ignoresActivation(ProcessID pid) const;
  Task<> reactToFocus(ProcessID pid, UUID tab);
  Task<> reactToActivation(ProcessID pid);
  Task<bool> hasVisibleWindow(ProcessID pid);

  Surroundings around_;
  MinimizeWatcher minimizeWatcher_;
};

}  // namespace pellow
