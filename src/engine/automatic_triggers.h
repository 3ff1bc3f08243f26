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
#include "model/preferences.h"
#include "model/tab_item.h"
#include "model/tab_store.h"
#include "platform/accessibility.h"

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
    const Preferences& preferences;
    const TabStore& store;
    TaskScope& tasks;
  };

  explicit AutomaticTriggers(const Surroundings& surroundings) : around_(surroundings) {}

  // This window is to become a tab.
  std::function<void(const TargetWindow&)> onPellow;
  // The window of this tab is put away by now.
  std::function<void(const TabItem&)> onMinimizedLate;
  std::function<void(UUID tab)> onRestore;

  void windowWasMinimized(const TargetWindow& window);
  void windowWasFocused(const TargetWindow& window);
  void appActivated(ProcessID pid);

  // The program asked for the window of this tab to be minimized and got no answer in time: should
  // that happen later, it needs its tab, whatever the user prefers.
  void expectLateMinimize(const TabItem& tab);
  // Should it be minimized from now on, that is somebody else's wish.
  void forgetLateMinimize(const TargetWindow& window) { takeLateMinimize(window); }
  const std::vector<TabItem>& lateMinimizes() const { return lateMinimizes_; }

 private:
  std::optional<TabItem> takeLateMinimize(const TargetWindow& window);
  bool ignoresActivation(ProcessID pid) const;
  Task<> reactToFocus(ProcessID pid, UUID tab);
  Task<> reactToActivation(ProcessID pid);
  Task<bool> hasVisibleWindow(ProcessID pid);

  Surroundings around_;
  std::vector<TabItem> lateMinimizes_;
};

}  // namespace pellow
