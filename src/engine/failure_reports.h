#pragma once

#include <cstddef>
#include <vector>

#include "access/pellow_error.h"
#include "access/target_window.h"
#include "base/log.h"
#include "base/task.h"
#include "views/alert_presenter.h"

namespace pellow {

// The one way in which failures reach the user: each in an alert of its own, or, while somebody
// collects them, all in one. Main thread.
class FailureReports {
 public:
  // `tasks` holds the alerts that nobody waits for.
  FailureReports(AlertPresenter& alerts, const Log& log, TaskScope& tasks)
      : alerts_(alerts), log_(log), tasks_(tasks) {}

  // Keeps failures for as long as it lives, in place of an alert for each. One at a time.
  class Collection {
   public:
    explicit Collection(FailureReports& reports) : reports_(reports) {
      reports_.collection_ = this;
    }
    Collection(const Collection&) = delete;
    Collection& operator=(const Collection&) = delete;
    ~Collection() { reports_.collection_ = nullptr; }

    std::vector<PellowError> failures;
    std::vector<TargetWindow> refusedOffscreen;  // those that would not be moved off-screen

   private:
    FailureReports& reports_;
  };

  // Logs the failures of one action and shows or collects them. Returns at once.
  void report(const PellowError& failure) { report(std::vector{failure}); }
  void report(const std::vector<PellowError>& failures);

  // Shows failures that are in the log already, in one alert. Returns at once.
  void show(const std::vector<PellowError>& failures);

  // A window would not be moved off-screen.
  void noteRefusal(const TargetWindow& window);

  // Asks whether windows that would not slide off-screen shall be minimized instead, below the
  // sentences of what failed.
  Task<bool> offerToMinimize(const std::vector<TargetWindow>& windows,
                             const std::vector<PellowError>& failures);

 private:
  Task<> tell(PellowError first, std::size_t additional);

  AlertPresenter& alerts_;
  const Log& log_;
  TaskScope& tasks_;
  Collection* collection_ = nullptr;
};

}  // namespace pellow
