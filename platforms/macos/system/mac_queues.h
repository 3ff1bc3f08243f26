#pragma once

#import <dispatch/dispatch.h>

#include <memory>

#include "platform/queues.h"
#include "platforms/posix/serial_work.h"

namespace pellow {

// The main queue of dispatch. It runs while a menu or a slider is tracked, too, but never within
// itself: its work begins no nested loop.
class DispatchMainQueue final : public MainQueue {
 public:
  Subscription async(Work work) override;
  Subscription after(Seconds delay, Work work) override;
  Subscription every(Seconds interval, std::function<void()> tick) override;
};

// A serial queue of dispatch, for work that the user waits for. Work may drop its own subscription
// and still runs to its end. Work must not destroy its queue.
class DispatchSerialQueue final : public SerialQueue {
 public:
  explicit DispatchSerialQueue(const std::string& label);
  ~DispatchSerialQueue() override;

  Subscription async(Work work) override;

 private:
  dispatch_queue_t const queue_;
  const std::shared_ptr<SerialWork> work_ = std::make_shared<SerialWork>();
};

class MacQueues final : public Queues {
 public:
  MainQueue& main() override { return main_; }
  std::unique_ptr<SerialQueue> makeSerialQueue(std::string label) override {
    return std::make_unique<DispatchSerialQueue>(label);
  }

 private:
  DispatchMainQueue main_;
};

}  // namespace pellow
