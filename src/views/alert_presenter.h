#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <memory>

#include "base/task.h"
#include "platform/alerts.h"

namespace pellow {

// Shows alerts one at a time, each to a task that waits for its answer. Main thread.
class AlertPresenter {
 public:
  explicit AlertPresenter(Alerts& alerts) : alerts_(alerts) {}
  AlertPresenter(const AlertPresenter&) = delete;
  AlertPresenter& operator=(const AlertPresenter&) = delete;

  // Shows the alert after those that were asked for before. The index of the button that was
  // chosen. A task that ends before takes its alert with it.
  Task<std::size_t> present(Alert alert);

  // Called when an alert has gone, answered or not; the system then activates the application that
  // was in front before.
  std::function<void()> onClosed;

 private:
  struct Request;

  void showNext();
  void leave(Request& request);

  Alerts& alerts_;
  std::list<Request*> waiting_;  // the first is on the screen
  Subscription shown_;
};

}  // namespace pellow
