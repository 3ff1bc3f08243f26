#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "access/ax_queue.h"
#include "access/target_window.h"
#include "base/task.h"
#include "base/uuid.h"
#include "engine/failure_reports.h"
#include "model/zone_store.h"
#include "platform/accessibility.h"
#include "platform/workspace.h"

namespace pellow {

// An application and all the windows that it has.
struct AppWindows {
  RunningApplication application;
  std::vector<TargetWindow> windows;  // at least one
  std::optional<UUID> zoneID;         // where it is pinned
};

// The three commands that put many windows away at once. One runs at a time, in the order in which
// they were asked for; each goes on past every failure and tells all of them at its end. Main
// thread.
class BulkActions {
 public:
  // How many windows go in one go. Between the look at the first one and the move of the last
  // nobody should have the time to drag it elsewhere.
  static constexpr std::size_t windowsTogether = 16;

  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    FailureReports& failures;
    TaskScope& tasks;
    Workspace& workspace;
    const ZoneStore& zones;
    ProcessID ownProcess;
  };

  explicit BulkActions(const Surroundings& surroundings) : around_(surroundings) {}

  // Puts the windows of these applications away but those excluded, and reports failures.
  std::function<Task<>(std::vector<AppWindows> applications, std::vector<TargetWindow> excluding)>
      pellowApps;
  // Minimizes a window to a tab, unless it has one.
  std::function<Task<>(TargetWindow window)> minimizeInstead;

  // Each returns at once.
  void pellowPinnedApps();
  void pellowEverything();
  void enterFocusMode();

  // Forgets what was asked for and has not begun; what runs ends with its task.
  void dropWaiting();

 private:
  using Action = Task<> (BulkActions::*)();

  void start(Action action);
  Task<> runWaiting();
  Task<> pinnedApps();
  Task<> everything();
  Task<> everythingElse();
  Task<> pellowAll(bool onlyPinned, std::vector<TargetWindow> excluding);
  Task<> offerToMinimize(FailureReports::Bulk bulk);

  Surroundings around_;
  std::deque<Action> waiting_;
  bool isRunning_ = false;
};

}  // namespace pellow
