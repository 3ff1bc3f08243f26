#include "platforms/linux/system/thread_serial_queue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <latch>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace pellow {
namespace {

// A queue whose first work runs until the test lets it end.
struct BusyQueue {
  std::latch begun{1};
  std::latch mayEnd{1};
  bool hasEnded = false;  // written by the queue, read after something that waits for it
  Subscription work;
  ThreadSerialQueue queue{"com.velloway.pellow.test"};

  BusyQueue() {
    work = queue.async([this] {
      begun.count_down();
      mayEnd.wait();
      hasEnded = true;
    });
    begun.wait();
  }
};

// Runs everything that was put in before.
void waitFor(SerialQueue& queue) {
  std::promise<void> done;
  const auto last = queue.async([&] { done.set_value(); });
  done.get_future().wait();
}

TEST(ThreadSerialQueue, RunsItsWorkInOrderOnOneOtherThread) {
  ThreadSerialQueue queue("com.velloway.pellow.test");
  std::vector<int> order;
  std::vector<std::thread::id> threads;
  std::vector<Subscription> works;
  for (int i = 0; i < 1000; ++i) {
    works.push_back(queue.async([&, i] {
      order.push_back(i);
      threads.push_back(std::this_thread::get_id());
    }));
  }
  waitFor(queue);

  EXPECT_EQ(order.size(), 1000u);
  EXPECT_TRUE(std::ranges::is_sorted(order));
  EXPECT_EQ(std::ranges::count(threads, threads.front()), 1000);
  EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(ThreadSerialQueue, DroppedWorkThatHasNotBegunNeverRunsAndFreesItsCapturesAtOnce) {
  bool ran = false;
  const auto capture = std::make_shared<int>();
  BusyQueue busy;
  auto dropped = busy.queue.async([&ran, capture] { ran = true; });
  EXPECT_EQ(capture.use_count(), 2);
  dropped.cancel();
  EXPECT_EQ(capture.use_count(), 1);
  busy.mayEnd.count_down();

  waitFor(busy.queue);
  EXPECT_FALSE(ran);
}

TEST(ThreadSerialQueue, DroppingWorkThatRunsWaitsForItsEnd) {
  BusyQueue busy;
  std::jthread releaser([&] { busy.mayEnd.count_down(); });
  busy.work.cancel();
  EXPECT_TRUE(busy.hasEnded);
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
  bool waitingRan = false;
  bool runningEnded = false;
  std::latch mayEnd{1};
  Subscription running;
  Subscription waiting;
  {
    std::latch begun{1};
    ThreadSerialQueue queue("com.velloway.pellow.test");
    running = queue.async([&] {
      begun.count_down();
      mayEnd.wait();
      runningEnded = true;
    });
    // The work that runs ends once the waiting one has been dropped, so only a queue that drops
    // first and waits then comes to its end.
    std::shared_ptr<std::latch> whenDropped(&mayEnd,
                                            [](std::latch* latch) { latch->count_down(); });
    waiting =
        queue.async([&waitingRan, whenDropped = std::move(whenDropped)] { waitingRan = true; });
    begun.wait();
  }
  EXPECT_TRUE(runningEnded);
  EXPECT_FALSE(waitingRan);
  running.cancel();  // subscriptions may outlive their queue
  waiting.cancel();
}

}  // namespace
}  // namespace pellow
