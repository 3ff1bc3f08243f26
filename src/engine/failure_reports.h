#pragma once

#include <cstddef>
#include <vector>

#include "access/pellow_error.h"
#include "access/target_window.h"
#include "base/log.h"
#include "base/task.h"
#include "base/texts.h"
#include "views/alert_presenter.h"

namespace pellow {

// The one way failures reach the user: each in an alert of its own or, while they are collected,
// all in one. Main thread.
class FailureReports {
 public:
  struct Surroundings {
    AlertPresenter& alerts;
    const Log& log;
    TaskScope& tasks;  // runs the alerts that nobody waits for
    const Texts& texts;
  };

  explicit FailureReports(const Surroundings& surroundings) : around_(surroundings) {}

  // While it lives, keeps failures instead of showing an alert for each. One at a time.
  class Collection {
   public:
    explicit Collection(FailureReports& reports) : reports_(reports) {
      reports_.collection_ = this;
    }
    Collection(const Collection&) = delete;
    Collection& operator=(const Collection&) = delete;
    ~Collection() { reports_.collection_ = nullptr; }

    std::vector<PellowError> failures;
    std::vector<TargetWindow> refusedOffscreen;  // windows that would not move off-screen

   private:
    FailureReports& reports_;
  };

  // Logs the failures of one action and shows or collects them. Returns at once.
  void report(const PellowError& failure) { report(std::vector{failure}); }
  void report(const std::vector<PellowError>& failures);

  // Shows failures, logged before, in one alert. Returns at once.
  void show(const std::vector<PellowError>& failures);

  // A window would not move off-screen.
  void noteRefusal(const TargetWindow& window);

  // Asks whether to minimize the windows that would not slide off-screen, below the sentences of
  // what failed.
  Task<bool> offerToMinimize(const std::vector<TargetWindow>& windows,
                             const std::vector<PellowError>& failures);

 private:
  Task<> tell(PellowError first, std::size_t additional);

  Surroundings around_;
  Collection* collection_ = nullptr;
};

}  // namespace pellow
