#include "platforms/macos/system/mac_queues.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
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

DispatchSerialQueue::DispatchSerialQueue(const std::string& label)
    : queue_(dispatch_queue_create(
          label.c_str(), dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL,
                                                                 QOS_CLASS_USER_INITIATED, 0))) {}

DispatchSerialQueue::~DispatchSerialQueue() { work_->end(); }

// Dispatch holds one block for each work that ever came; each runs the work that waits longest by
// then, and those of dropped work find none.
Subscription DispatchSerialQueue::async(Work work) {
  auto subscription = work_->add(std::move(work));
  const auto works = work_;
  dispatch_async(queue_, ^{
    works->runNext(runInPool);
  });
  return subscription;
}

}  // namespace pellow
