#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "access/ax_queue.h"
#include "access/target_window.h"
#include "base/log.h"
#include "base/task.h"
#include "base/uuid.h"
#include "engine/displays.h"
#include "engine/echo_guard.h"
#include "engine/ledger.h"
#include "model/mechanism.h"
#include "model/tab_store.h"
#include "platform/accessibility.h"
#include "platform/user_defaults.h"

namespace pellow {

// What the engine does by itself when something happens in other applications: a window that is
// minimized becomes a tab, and a tab comes back when its window is chosen from its application, or
// when an application becomes active that has nothing else to show. Main thread.
class AutomaticTriggers {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    const Displays& displays;
    EchoGuard& echoes;
    const Ledger& ledger;
    const Log& log;
    const TabStore& store;
    TaskScope& tasks;
    const UserDefaults& userDefaults;
  };

  explicit AutomaticTriggers(const Surroundings& surroundings) : around_(surroundings) {}

  // This window is to become a tab; without a mechanism, by the preferred one.
  std::function<void(const TargetWindow&, std::optional<Mechanism>)> onPellow;
  std::function<void(UUID tab)> onRestore;

  void windowWasMinimized(const TargetWindow& window);
  void windowWasFocused(const TargetWindow& window);
  void appActivated(ProcessID pid);

  // The program asked for this window to be minimized and got no answer in time: should it be
  // minimized later, it needs its tab, whatever the user prefers.
  void expectLateMinimize(const TargetWindow& window);

 private:
  bool ignoresActivation(ProcessID pid) const;
  Task<> reactToFocus(ProcessID pid, UUID tab);
  Task<> reactToActivation(ProcessID pid);
  Task<bool> hasVisibleWindow(ProcessID pid);

  Surroundings around_;
  std::vector<TargetWindow> lateMinimizes_;
};

}  // namespace pellow
