#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <memory>

#include "base/task.h"
#include "platform/alerts.h"
#include "platform/process.h"

namespace pellow {

// Shows alerts one at a time, each to a task that waits for its answer. Main thread.
class AlertPresenter {
 public:
  AlertPresenter(Alerts& alerts, Process& process) : alerts_(alerts), process_(process) {}
  AlertPresenter(const AlertPresenter&) = delete;
  AlertPresenter& operator=(const AlertPresenter&) = delete;

  // Brings the program to the front and shows the alert, after those asked for before; answers the
  // index of the button chosen. A task that ends first takes its alert with it.
  Task<std::size_t> present(Alert alert);

  // Called when an alert has gone, answered or not; the system then activates the application that
  // was in front before.
  std::function<void()> onClosed;

 private:
  struct Request;

  void showNext();
  void leave(Request& request);

  Alerts& alerts_;
  Process& process_;
  std::list<Request*> waiting_;  // the first is on the screen
  Subscription shown_;
};

}  // namespace pellow
