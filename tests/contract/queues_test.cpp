#include "platform/queues.h"

#include <thread>

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class QueuesContract : public ContractTest {
 protected:
  // Work that ends after a while.
  Work slow(const std::string& what) {
    return [this, what] {
      platform.clock().sleep(0.05);
      heard.push_back(what);
    };
  }

  MainQueue& mainQueue = platform.queues().main();
};

TEST_F(QueuesContract, TheMainQueueKeepsTheOrderAndDropsWhatNobodyWants) {
  const auto thread = std::this_thread::get_id();
  const auto late = mainQueue.after(0.04, note("late"));
  const auto early = mainQueue.after(0.02, note("early"));
  const auto first = mainQueue.async([&] {
    heard.push_back("first");
    EXPECT_EQ(std::this_thread::get_id(), thread);
  });
  auto dropped = mainQueue.async(note("dropped"));
  auto droppedInTime = mainQueue.after(0.01, note("dropped in time"));
  const auto second = mainQueue.async([&] {
    heard.push_back("second");
    droppedInTime.cancel();
  });
  dropped.cancel();
  EXPECT_TRUE(heard.empty()) << "nothing runs within the call";
  EXPECT_TRUE(hears({"first", "second", "early", "late"}));
}

TEST_F(QueuesContract, ATimerTicksUntilItEndsAndMayEndItself) {
  const auto start = platform.clock().now();
  Subscription timer = mainQueue.every(0.02, [&] {
    heard.push_back("tick");
    if (heard.size() == 3) timer.cancel();
  });
  EXPECT_TRUE(hears({"tick", "tick", "tick"}));
  EXPECT_GE(platform.clock().now(), start + 0.06);
  const auto later = mainQueue.after(0.1, note("later"));
  EXPECT_TRUE(hears({"later"}));
}

TEST_F(QueuesContract, ASerialQueueDoesOneThingAfterTheOtherElsewhere) {
  Subscription back;
  const auto queue = platform.queues().makeSerialQueue("com.velloway.pellow.actions");
  const auto own = std::this_thread::get_id();
  const auto one = queue->async([&, work = slow("one")]() mutable {
    EXPECT_NE(std::this_thread::get_id(), own);
    work();
  });
  auto dropped = queue->async(note("dropped"));
  const auto two = queue->async([&] {
    heard.push_back("two");
    back = mainQueue.async(note("three"));
  });
  dropped.cancel();
  EXPECT_TRUE(hears({"one", "two", "three"}));
}

TEST_F(QueuesContract, WorkThatIsDroppedHasEndedAndSoHasThatOfAQueueThatEnds) {
  auto queue = platform.queues().makeSerialQueue("com.velloway.pellow.actions");
  bool runs = false;
  auto running = queue->async([&] {
    runs = true;
    slow("done")();
    runs = false;
  });
  ASSERT_TRUE(until([&] { return runs || !heard.empty(); }));
  running.cancel();
  EXPECT_FALSE(runs);
  EXPECT_EQ(std::exchange(heard, {}), std::vector<std::string>{"done"});

  runs = false;
  const auto last = queue->async([&] {
    runs = true;
    slow("last")();
  });
  const auto waiting = queue->async(note("never"));
  ASSERT_TRUE(until([&] { return runs; }));
  queue.reset();
  EXPECT_EQ(heard, std::vector<std::string>{"last"});
}

}  // namespace
}  // namespace pellow::contract
