#pragma once

#include <memory>
#include <string>
#include <thread>

#include "platform/queues.h"

namespace pellow {

// A serial queue on a thread of its own, which sleeps while there is no work. Work may drop its own
// subscription and still runs to its end. Work must not destroy its queue.
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
