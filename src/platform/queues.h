#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/function.h"
#include "base/subscription.h"
#include "platform/clock.h"

namespace pellow {

using Work = Function<void()>;

// The main thread's queue. Call its members on any thread; drop their subscriptions on the main
// thread, if need be from within their own work.
class MainQueue {
 public:
  virtual ~MainQueue() = default;

  // Runs `work` soon, after all that was queued before. Dropping the subscription drops the work.
  virtual Subscription async(Work work) = 0;

  // Runs `work` once, no earlier than `delay` from now.
  virtual Subscription after(Seconds delay, Work work) = 0;

  // Runs `tick` at every interval, the first time after one, until the subscription ends.
  virtual Subscription every(Seconds interval, std::function<void()> tick) = 0;
};

// A thread of its own that runs work one at a time, in the order it came.
class SerialQueue {
 public:
  // Drops work that has not begun and waits for work that runs.
  virtual ~SerialQueue() = default;

  // Runs `work` after all that was queued before. Dropping the subscription drops work that has not
  // begun and waits for work that runs. Main thread.
  virtual Subscription async(Work work) = 0;
};

class Queues {
 public:
  virtual ~Queues() = default;

  virtual MainQueue& main() = 0;

  // `label` names the queue in tools, for example "com.velloway.pellow.actions".
  virtual std::unique_ptr<SerialQueue> makeSerialQueue(std::string label) = 0;
};

}  // namespace pellow
