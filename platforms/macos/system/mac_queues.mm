#include "platforms/macos/system/mac_queues.h"

#import <dispatch/dispatch.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "platforms/macos/foundation/main_queue.h"

namespace pellow {
namespace {

// Rounded up, so that nothing comes early; a century stands for ever.
std::int64_t nanoseconds(Seconds duration) {
  return static_cast<std::int64_t>(std::ceil(std::clamp(duration, 0.0, 3e9) * 1e9));
}

dispatch_time_t fromNow(std::int64_t nanosecondsAhead) {
  return dispatch_time(DISPATCH_TIME_NOW, nanosecondsAhead);
}

// What a block of dispatch and a subscription share: whoever comes first takes the work.
using SharedWork = std::shared_ptr<Work>;

Subscription dropping(SharedWork work) {
  return Subscription([work = std::move(work)] { const auto dropped = std::move(*work); });
}

dispatch_block_t runOnce(SharedWork shared) {
  return ^{
    if (auto work = std::move(*shared)) runInPool(std::move(work));
  };
}

}  // namespace

Subscription DispatchMainQueue::async(Work work) {
  const auto shared = std::make_shared<Work>(std::move(work));
  dispatch_async(dispatch_get_main_queue(), runOnce(shared));
  return dropping(shared);
}

Subscription DispatchMainQueue::after(Seconds delay, Work work) {
  const auto shared = std::make_shared<Work>(std::move(work));
  dispatch_after(fromNow(nanoseconds(delay)), dispatch_get_main_queue(), runOnce(shared));
  return dropping(shared);
}

Subscription DispatchMainQueue::every(Seconds interval, std::function<void()> tick) {
  const auto pause = std::max<std::int64_t>(nanoseconds(interval), 1);
  auto held = std::make_shared<std::function<void()>>(std::move(tick));
  const std::weak_ptr weak = held;
  dispatch_source_t const timer =
      dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, dispatch_get_main_queue());
  dispatch_source_set_timer(timer, fromNow(pause), static_cast<std::uint64_t>(pause), 0);
  dispatch_source_set_event_handler(timer, ^{
    runInPool([&] {
      if (const auto live = weak.lock()) (*live)();
    });
  });
  dispatch_activate(timer);
  return Subscription([timer, held = std::move(held)]() mutable {
    dispatch_source_cancel(timer);
    held.reset();
  });
}

// Dispatch holds one block for each work that ever came; each runs the work that waits longest by
// then, and those of dropped work find none.
struct DispatchSerialQueue::State {
  struct Item {
    std::uint64_t token = 0;
    Work work;
  };

  explicit State(const std::string& label)
      : queue(dispatch_queue_create(
            label.c_str(), dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL,
                                                                   QOS_CLASS_USER_INITIATED, 0))) {}

  dispatch_queue_t const queue;
  std::mutex mutex;
  std::condition_variable hasFinished;
  std::deque<Item> waiting;
  std::optional<std::uint64_t> running;
  std::thread::id thread;  // that of the running work
  std::uint64_t nextToken = 0;

  std::uint64_t add(Work work);
  void runNext();
  void drop(std::uint64_t token);
  void end();
};

std::uint64_t DispatchSerialQueue::State::add(Work work) {
  const std::lock_guard lock(mutex);
  waiting.push_back({nextToken, std::move(work)});
  return nextToken++;
}

void DispatchSerialQueue::State::runNext() {
  std::unique_lock lock(mutex);
  if (waiting.empty()) return;
  auto item = std::move(waiting.front());
  waiting.pop_front();
  running = item.token;
  thread = std::this_thread::get_id();
  lock.unlock();
  runInPool(std::move(item.work));  // what it captured has gone, too, when its end is announced
  lock.lock();
  running.reset();
  hasFinished.notify_all();
}

void DispatchSerialQueue::State::drop(std::uint64_t token) {
  Work dropped;  // destroyed without the lock, as its captures may use the queue
  std::unique_lock lock(mutex);
  const auto found = std::ranges::find(waiting, token, &Item::token);
  if (found != waiting.end()) {
    dropped = std::move(found->work);
    waiting.erase(found);
    return;
  }
  if (running != token || thread == std::this_thread::get_id()) return;
  hasFinished.wait(lock, [&] { return running != token; });
}

void DispatchSerialQueue::State::end() {
  std::deque<Item> dropped;
  std::unique_lock lock(mutex);
  dropped.swap(waiting);
  hasFinished.wait(lock, [&] { return !running; });
}

DispatchSerialQueue::DispatchSerialQueue(const std::string& label)
    : state_(std::make_shared<State>(label)) {}

DispatchSerialQueue::~DispatchSerialQueue() { state_->end(); }

Subscription DispatchSerialQueue::async(Work work) {
  const auto token = state_->add(std::move(work));
  const auto state = state_;
  dispatch_async(state->queue, ^{
    state->runNext();
  });
  return Subscription([weak = std::weak_ptr(state_), token] {
    if (const auto live = weak.lock()) live->drop(token);
  });
}

}  // namespace pellow
