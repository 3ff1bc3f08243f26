#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "platform/queues.h"

namespace pellow {

// The works of a serial queue: which wait, and which one runs. The threads are the queue's own. Any
// thread.
class SerialWork : public std::enable_shared_from_this<SerialWork> {
 public:
  // The subscription is that of `SerialQueue::async`. Work may drop its own, and still runs to its
  // end.
  Subscription add(Work work) {
    const std::lock_guard lock(mutex_);
    waiting_.push_back({++lastToken_, std::move(work)});
    hasChanged_.notify_all();
    return Subscription([weak = weak_from_this(), token = lastToken_] {
      if (const auto self = weak.lock()) self->drop(token);
    });
  }

  // Returns when there is work, with true, or after the end.
  bool waitForNext() {
    std::unique_lock lock(mutex_);
    hasChanged_.wait(lock, [&] { return hasEnded_ || !waiting_.empty(); });
    return !hasEnded_;
  }

  // Hands the work that waits longest to `run`, if it was not dropped meanwhile. One at a time.
  void runNext(void (*run)(Work work)) {
    std::unique_lock lock(mutex_);
    if (waiting_.empty()) return;
    auto item = std::move(waiting_.front());
    waiting_.pop_front();
    running_ = item.token;
    thread_ = std::this_thread::get_id();
    lock.unlock();
    run(std::move(item.work));  // what it captured has gone, too, when its end is announced
    lock.lock();
    running_.reset();
    hasChanged_.notify_all();
  }

  // Drops what waits, and waits for what runs.
  void end() {
    std::deque<Item> dropped;
    std::unique_lock lock(mutex_);
    hasEnded_ = true;
    dropped.swap(waiting_);
    hasChanged_.notify_all();
    lock.unlock();
    dropped.clear();
    lock.lock();
    hasChanged_.wait(lock, [&] { return !running_; });
  }

 private:
  struct Item {
    std::uint64_t token = 0;
    Work work;
  };

  void drop(std::uint64_t token) {
    Work dropped;  // destroyed without the lock, as its captures may use the queue
    std::unique_lock lock(mutex_);
    const auto found = std::ranges::find(waiting_, token, &Item::token);
    if (found != waiting_.end()) {
      dropped = std::move(found->work);
      waiting_.erase(found);
      return;
    }
    if (running_ != token || thread_ == std::this_thread::get_id()) return;
    hasChanged_.wait(lock, [&] { return running_ != token; });
  }

  std::mutex mutex_;
  std::condition_variable hasChanged_;
  std::deque<Item> waiting_;
  std::optional<std::uint64_t> running_;
  std::thread::id thread_;  // that of the latest work to run
  std::uint64_t lastToken_ = 0;
  bool hasEnded_ = false;
};

}  // namespace pellow
