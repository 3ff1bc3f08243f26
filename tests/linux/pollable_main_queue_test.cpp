#include "platforms/linux/system/pollable_main_queue.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platforms/linux/system/monotonic_clock.h"

namespace pellow {
namespace {

constexpr Seconds moment = 0.002;

class PollableMainQueueTest : public testing::Test {
 protected:
  bool isReadable(int milliseconds = 0) {
    pollfd descriptor{queue_.fileDescriptor(), POLLIN, 0};
    return poll(&descriptor, 1, milliseconds) == 1;
  }
  // Does what the program's loop does until the story has this many entries.
  void runUntil(std::size_t entries) {
    while (story_.size() < entries) {
      ASSERT_TRUE(isReadable(30'000)) << "nothing comes any more";
      queue_.runPending();
    }
  }
  std::function<void()> tell(std::string entry) {
    return [this, entry = std::move(entry)] { story_.push_back(entry); };
  }

  MonotonicClock clock_;
  PollableMainQueue queue_;
  std::vector<std::string> story_;
};

TEST_F(PollableMainQueueTest, DroppedWorkNeverRunsNeverWakesAndFreesItsCapturesAtOnce) {
  const auto capture = std::make_shared<int>();
  auto work = queue_.async([capture] {});
  auto later = queue_.after(moment, [capture] {});
  auto repeated = queue_.every(moment, [capture] {});
  EXPECT_EQ(capture.use_count(), 4);
  work.cancel();
  later.cancel();
  repeated.cancel();
  EXPECT_EQ(capture.use_count(), 1);
  EXPECT_FALSE(isReadable(20));
}

TEST_F(PollableMainQueueTest, WorkMayRunTheQueueAndWhatItPutsInWaitsForTheNextTurn) {
  Subscription next;
  const auto outer = queue_.async([&] {
    tell("outer begins")();
    queue_.runPending();
    next = queue_.async(tell("next turn"));
    tell("outer ends")();
  });
  const auto inner = queue_.async(tell("inner"));
  queue_.runPending();
  EXPECT_EQ(story_, (std::vector<std::string>{"outer begins", "inner", "outer ends"}));
  runUntil(4);
  EXPECT_EQ(story_.back(), "next turn");
}

TEST_F(PollableMainQueueTest, RepeatedWorkLeavesOutMissedTicksAndGoesOnUntilItDropsItself) {
  Subscription ticks;
  ticks = queue_.every(moment, [&] {
    tell("tick")();
    if (story_.size() == 3) ticks.cancel();
  });
  clock_.sleep(20 * moment);
  queue_.runPending();
  EXPECT_EQ(story_.size(), 1u);
  runUntil(3);
  EXPECT_FALSE(isReadable(20));
}

}  // namespace
}  // namespace pellow
