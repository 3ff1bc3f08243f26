#pragma once

#include <optional>
#include <vector>

#include "access/pellow_error.h"
#include "access/target_window.h"
#include "base/log.h"
#include "base/task.h"
#include "views/alert_presenter.h"

namespace pellow {

// The one way in which failures reach the user: each in an alert of its own, or, while a bulk
// action runs, all of them at its end in one. Main thread.
class FailureReports {
 public:
  // `tasks` holds the alerts that nobody waits for.
  FailureReports(AlertPresenter& alerts, const Log& log, TaskScope& tasks)
      : alerts_(alerts), log_(log), tasks_(tasks) {}

  // Logs the failures of one action and shows them in one alert, or keeps them for the end of the
  // bulk action. Returns at once.
  void report(const PellowError& failure) { report(std::vector{failure}); }
  void report(const std::vector<PellowError>& failures);

  // A window would not be moved off-screen, in or out of a bulk action.
  void noteRefusal(const TargetWindow& window);

  // From here to `endBulk` failures are kept.
  void beginBulk();

  // What was kept, for the caller to tell.
  struct Bulk {
    std::vector<PellowError> failures;
    std::vector<TargetWindow> refusedOffscreen;
  };
  Bulk endBulk();

  // Asks whether windows that would not slide off-screen shall be minimized instead, below the
  // sentences of what failed.
  Task<bool> offerToMinimize(const std::vector<TargetWindow>& windows,
                             const std::vector<PellowError>& failures);

 private:
  Task<> tell(PellowError first, std::size_t additional);

  AlertPresenter& alerts_;
  const Log& log_;
  TaskScope& tasks_;
  std::optional<std::vector<PellowError>> bulkFailures_;
  std::vector<TargetWindow> refusedOffscreen_;
};

}  // namespace pellow
