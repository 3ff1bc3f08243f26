#pragma once

#include <memory>

#include "platform/queues.h"

namespace pellow {

// The main queue behind a file descriptor, for whatever loop the main thread runs. The loop waits
// for the descriptor without a time limit: only due work wakes it.
class PollableMainQueue final : public MainQueue {
 public:
  PollableMainQueue();
  ~PollableMainQueue() override;

  Subscription async(Work work) override;
  Subscription after(Seconds delay, Work work) override;
  Subscription every(Seconds interval, std::function<void()> tick) override;

  // Readable when `runPending` has something to do.
  int fileDescriptor() const;

  // Runs posted work and due timers, one by one; what these post waits for the next call. Work may
  // call this too. Main thread.
  void runPending();

 private:
  struct State;

  std::shared_ptr<State> state_;
};

}  // namespace pellow
