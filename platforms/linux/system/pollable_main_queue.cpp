#include "platforms/linux/system/pollable_main_queue.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>
#include <utility>

#include "platforms/posix/file_descriptor.h"

namespace pellow {
namespace {

using Nanoseconds = std::chrono::nanoseconds;

Nanoseconds now() { return std::chrono::steady_clock::now().time_since_epoch(); }

// Rounds up, so that nothing comes early; a century stands for ever.
Nanoseconds rounded(Seconds duration) {
  return std::chrono::ceil<Nanoseconds>(
      std::chrono::duration<Seconds>(std::clamp(duration, 0.0, 3e9)));
}

FileDescriptor makeTimer() {
  const int number = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
  if (number < 0) throw std::system_error(errno, std::generic_category(), "no timer");
  return FileDescriptor(number);
}

}  // namespace

// Posted work is a timer due at once, so one kernel timer, set to the earliest, serves everything.
struct PollableMainQueue::State {
  // Equal moments in the order in which they came.
  using Due = std::pair<Nanoseconds, std::uint64_t>;

  struct Item {
    Due due;
    std::optional<Nanoseconds> interval;  // absent: runs once
    Work work;
    bool cancelled = false;
  };

  const FileDescriptor timer = makeTimer();
  std::mutex mutex;
  std::map<Due, std::shared_ptr<Item>> waiting;
  std::uint64_t nextNumber = 0;

  std::shared_ptr<Item> add(Nanoseconds delay, std::optional<Nanoseconds> interval, Work work);
  std::shared_ptr<Item> takeDueBy(Nanoseconds moment);
  void repeat(std::shared_ptr<Item> item);
  void cancel(const std::shared_ptr<Item>& item);
  void rearm();

  static Subscription cancelling(std::weak_ptr<State> state, std::weak_ptr<Item> item);

 private:
  void arm();
};

std::shared_ptr<PollableMainQueue::State::Item> PollableMainQueue::State::add(
    Nanoseconds delay, std::optional<Nanoseconds> interval, Work work) {
  const std::lock_guard lock(mutex);
  const Due due{now() + delay, nextNumber++};
  auto item = std::make_shared<Item>(due, interval, std::move(work));
  waiting.emplace(due, item);
  if (waiting.begin()->first == due) arm();
  return item;
}

std::shared_ptr<PollableMainQueue::State::Item> PollableMainQueue::State::takeDueBy(
    Nanoseconds moment) {
  const std::lock_guard lock(mutex);
  if (waiting.empty() || waiting.begin()->first.first > moment) return nullptr;
  auto item = std::move(waiting.begin()->second);
  waiting.erase(waiting.begin());
  return item;
}

// Keeps the rhythm; missed ticks are skipped.
void PollableMainQueue::State::repeat(std::shared_ptr<Item> item) {
  const std::lock_guard lock(mutex);
  auto& [moment, number] = item->due;
  const auto missed = std::max<std::int64_t>((now() - moment) / *item->interval, 0);
  moment += (missed + 1) * *item->interval;
  number = nextNumber++;
  waiting.emplace(item->due, item);
}

void PollableMainQueue::State::cancel(const std::shared_ptr<Item>& item) {
  std::shared_ptr<Item> dropped;  // destroyed without the lock, as its captures may use the queue
  const std::lock_guard lock(mutex);
  item->cancelled = true;
  const auto found = waiting.find(item->due);
  if (found == waiting.end()) return;
  const bool wasFirst = found == waiting.begin();
  dropped = std::move(found->second);
  waiting.erase(found);
  if (wasFirst) arm();
}

void PollableMainQueue::State::rearm() {
  const std::lock_guard lock(mutex);
  arm();
}

void PollableMainQueue::State::arm() {
  itimerspec setting{};  // zero disarms it
  if (!waiting.empty()) {
    const auto moment = waiting.begin()->first.first;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
    setting.it_value = {seconds.count(), (moment - seconds).count()};
  }
  timerfd_settime(timer.number(), TFD_TIMER_ABSTIME, &setting, nullptr);
}

Subscription PollableMainQueue::State::cancelling(std::weak_ptr<State> state,
                                                  std::weak_ptr<Item> item) {
  return Subscription([state = std::move(state), item = std::move(item)] {
    const auto queue = state.lock();
    const auto pending = item.lock();
    if (queue && pending) queue->cancel(pending);
  });
}

PollableMainQueue::PollableMainQueue() : state_(std::make_shared<State>()) {}
PollableMainQueue::~PollableMainQueue() = default;

Subscription PollableMainQueue::async(Work work) { return after(0, std::move(work)); }

Subscription PollableMainQueue::after(Seconds delay, Work work) {
  return State::cancelling(state_, state_->add(rounded(delay), std::nullopt, std::move(work)));
}

Subscription PollableMainQueue::every(Seconds interval, std::function<void()> tick) {
  const auto pause = std::max(rounded(interval), Nanoseconds(1));
  return State::cancelling(state_, state_->add(pause, pause, std::move(tick)));
}

int PollableMainQueue::fileDescriptor() const { return state_->timer.number(); }

void PollableMainQueue::runPending() {
  const auto state = state_;
  const auto moment = now();
  while (const auto item = state->takeDueBy(moment)) {
    item->work();
    if (!item->interval) {
      item->work = nullptr;
    } else if (!item->cancelled) {
      state->repeat(item);
    }
  }
  state->rearm();
}

}  // namespace pellow
