#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/function.h"
#include "base/subscription.h"
#include "platform/clock.h"

namespace pellow {

using Work = Function<void()>;

// The queue of the main thread. Its members may be called on any thread; the subscriptions that
// they return are dropped on the main thread, if need be by their own work while it runs.
class MainQueue {
 public:
  virtual ~MainQueue() = default;

  // Runs `work` soon, after what was put in before. Dropping the subscription drops the work.
  virtual Subscription async(Work work) = 0;

  // Runs `work` once, no earlier than `delay` from now.
  virtual Subscription after(Seconds delay, Work work) = 0;

  // Runs `tick` again and again, first after one interval, until the subscription ends.
  virtual Subscription every(Seconds interval, std::function<void()> tick) = 0;
};

// A thread of its own that runs its work one at a time, in the order in which it came.
class SerialQueue {
 public:
  // Drops work that has not begun and waits for the one that runs.
  virtual ~SerialQueue() = default;

  // Runs `work` after all that was put in before. Dropping the subscription drops the work if it
  // has not begun and waits for its end if it runs. Main thread.
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
