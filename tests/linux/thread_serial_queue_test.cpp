#include "platforms/linux/system/thread_serial_queue.h"

#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <memory>
#include <utility>

namespace pellow {
namespace {

// A queue whose first work runs until the test lets it end.
struct BusyQueue {
  std::latch begun{1};
  std::latch mayEnd{1};
  Subscription work;
  ThreadSerialQueue queue{"com.velloway.pellow.test"};

  BusyQueue() {
    work = queue.async([this] {
      begun.count_down();
      mayEnd.wait();
    });
    begun.wait();
  }
};

// Waits for everything put in before.
void waitFor(SerialQueue& queue) {
  std::promise<void> done;
  const auto last = queue.async([&] { done.set_value(); });
  done.get_future().wait();
}

TEST(ThreadSerialQueue, WorkMayDropItselfAndWorkBehindIt) {
  ThreadSerialQueue queue("com.velloway.pellow.test");
  std::latch subscribed{1};
  bool secondRan = false;
  Subscription first;
  Subscription second;
  first = queue.async([&] {
    subscribed.wait();
    first.cancel();
    second.cancel();
  });
  second = queue.async([&] { secondRan = true; });
  subscribed.count_down();
  waitFor(queue);
  EXPECT_FALSE(secondRan);
}

TEST(ThreadSerialQueue, EndsAfterTheRunningWorkWithoutTheRest) {
  Subscription waiting;
  Subscription running;
  {
    BusyQueue busy;
    const auto capture = std::make_shared<int>();
    auto dropped = busy.queue.async([capture] { ADD_FAILURE(); });
    dropped.cancel();
    EXPECT_EQ(capture.use_count(), 1);
    // The running work ends only once the waiting work is dropped, so a queue that does not drop
    // first waits forever.
    std::shared_ptr<std::latch> whenDropped(&busy.mayEnd,
                                            [](std::latch* latch) { latch->count_down(); });
    waiting = busy.queue.async([held = std::move(whenDropped)] { ADD_FAILURE(); });
    running = std::move(busy.work);
  }
  waiting.cancel();  // subscriptions may outlive their queue
  running.cancel();
}

}  // namespace
}  // namespace pellow
