#pragma once

#include <deque>
#include <optional>
#include <vector>

#include "access/ax_queue.h"
#include "access/target_window.h"
#include "base/task.h"
#include "engine/departures.h"
#include "engine/failure_reports.h"
#include "model/zone_store.h"
#include "platform/accessibility.h"
#include "platform/workspace.h"

namespace pellow {

// The three commands that put many windows away at once. One runs at a time, in the order asked
// for; each goes on past failures and reports them all at its end. Main thread.
class BulkActions {
 public:
  struct Surroundings {
    Accessibility& accessibility;
    AXQueue& axQueue;
    Departures& departures;
    FailureReports& failures;
    TaskScope& tasks;
    Workspace& workspace;
    const ZoneStore& zones;
    ProcessID ownProcess;
  };

  explicit BulkActions(const Surroundings& surroundings) : around_(surroundings) {}

  // Each returns at once.
  void pellowPinnedApps();
  void pellowEverything();
  // All but the window with the focus now.
  void enterFocusMode();

  // Forgets commands that have not begun; one that runs ends with its task.
  void dropWaiting() { waiting_.clear(); }

 private:
  enum class Applications { pinned, all };

  // Which windows go.
  struct Command {
    Applications applications;
    std::vector<TargetWindow> excluding;
  };

  struct Failed {
    std::vector<PellowError> failures;
    std::vector<TargetWindow> refusedOffscreen;
  };

  void enqueue(Command command);
  Task<> runWaiting();
  Task<Failed> run(Command command);
  Task<> pellowAll(Command command);
  Task<> focusMode(std::optional<ProcessID> frontmostApplication);
  std::vector<RunningApplication> applications(Applications which) const;
  Task<> offerToMinimize(Failed failed);

  Surroundings around_;
  std::deque<Command> waiting_;
  bool isRunning_ = false;
};

}  // namespace pellow
