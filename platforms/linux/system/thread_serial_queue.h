#pragma once

#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "platform/queues.h"
#include "platforms/posix/serial_work.h"

namespace pellow {

// A serial queue on a thread of its own, which sleeps while there is no work. Work may drop its own
// subscription and still runs to its end. Work must not destroy its queue.
class ThreadSerialQueue final : public SerialQueue {
 public:
  explicit ThreadSerialQueue(const std::string& label);
  ~ThreadSerialQueue() override;

  Subscription async(Work work) override { return work_->add(std::move(work)); }

 private:
  const std::shared_ptr<SerialWork> work_ = std::make_shared<SerialWork>();
  std::thread thread_;
};

}  // namespace pellow
