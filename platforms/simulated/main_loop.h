#pragma once

#include <functional>
#include <memory>

#include "platform/queues.h"
#include "platforms/simulated/scheduler.h"

namespace pellow::simulated {

// The main thread's pending work, by virtual time, and the loop that does it. Any thread may post;
// the rest is for the main thread.
class MainLoop {
 public:
  explicit MainLoop(Scheduler& scheduler);
  ~MainLoop();

  Subscription after(Seconds delay, Work work);
  Subscription every(Seconds interval, std::function<void()> tick);

  // An event of the desktop, now or at a moment to come: nobody takes it back.
  void post(Work event, Seconds moment = 0);

  // Runs until nothing is pending on any thread but repeating timers and work due later than
  // `horizon` after now. Throws when that takes more than a virtual day.
  void runUntilQuiet(Seconds horizon);

  // Runs everything due in this time; the clock then stands at its end.
  void run(Seconds duration);

  // Lets the loop call `atEnd` next and end.
  void terminate(std::function<void()> atEnd);

  // Nothing of the process runs on the main thread any more.
  void stop();

 private:
  struct Items;

  Subscription add(Seconds due, Work work, std::function<void()> tick, Seconds interval);
  Seconds nextDue() const;
  bool isQuiet(Seconds horizon) const;
  void runWhile(const std::function<Seconds()>& givesWayUntil, Seconds limit);
  bool runDueItem();

  Scheduler& scheduler_;
  std::shared_ptr<Items> items_;
  std::function<void()> atEnd_;
  bool isRunning_ = false;
  bool isStopped_ = false;
};

}  // namespace pellow::simulated
