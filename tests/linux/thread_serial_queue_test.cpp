#include "platforms/linux/system/thread_serial_queue.h"

#include <gtest/gtest.h>

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

// Waits for everything put in before.
void waitFor(SerialQueue& queue) {
  std::promise<void> done;
  const auto last = queue.async([&] { done.set_value(); });
  done.get_future().wait();
}

TEST(ThreadSerialQueue, RunsItsWorkInOrderOnOneOtherThread) {
  ThreadSerialQueue queue("com.velloway.pellow.test");
  std::vector<std::pair<int, std::thread::id>> ran;
  std::vector<Subscription> works;
  for (int i = 0; i < 1000; ++i)
    works.push_back(queue.async([&, i] { ran.emplace_back(i, std::this_thread::get_id()); }));
  waitFor(queue);

  ASSERT_EQ(ran.size(), 1000u);
  EXPECT_NE(ran[0].second, std::this_thread::get_id());
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(ran[i], std::pair(i, ran[0].second));
}

TEST(ThreadSerialQueue, DroppedWorkNeverRunsOrHasEnded) {
  bool ran = false;
  const auto capture = std::make_shared<int>();
  BusyQueue busy;
  auto dropped = busy.queue.async([&ran, capture] { ran = true; });
  EXPECT_EQ(capture.use_count(), 2);
  dropped.cancel();
  EXPECT_EQ(capture.use_count(), 1);

  std::jthread releaser([&] { busy.mayEnd.count_down(); });
  busy.work.cancel();
  EXPECT_TRUE(busy.hasEnded) << "dropping work that runs waits for its end";
  waitFor(busy.queue);
  EXPECT_FALSE(ran);
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
