#pragma once

#include <memory>
#include <string>
#include <thread>

#include "platform/queues.h"

namespace pellow {

// A serial queue on a thread of its own, which sleeps while there is no work. Its subscriptions may
// also be dropped by the work itself, which then goes on to its end. The queue does not end in its
// own work.
class ThreadSerialQueue final : public SerialQueue {
 public:
  explicit ThreadSerialQueue(const std::string& label);
  ~ThreadSerialQueue() override;

  Subscription async(Work work) override;

 private:
  struct State;

  std::shared_ptr<State> state_;
  std::thread thread_;
};

}  // namespace pellow
