#include "platforms/linux/system/thread_serial_queue.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace pellow {

struct ThreadSerialQueue::State {
  struct Item {
    std::uint64_t token = 0;
    Work work;
  };

  std::mutex mutex;
  std::condition_variable hasWork;
  std::condition_variable hasFinished;
  std::deque<Item> waiting;
  std::optional<std::uint64_t> running;
  std::thread::id thread;
  std::uint64_t nextToken = 0;
  bool ending = false;

  std::uint64_t add(Work work);
  void run();
  void drop(std::uint64_t token);
  void end();
};

std::uint64_t ThreadSerialQueue::State::add(Work work) {
  const std::lock_guard lock(mutex);
  waiting.push_back({nextToken, std::move(work)});
  hasWork.notify_one();
  return nextToken++;
}

void ThreadSerialQueue::State::run() {
  std::unique_lock lock(mutex);
  thread = std::this_thread::get_id();
  for (;;) {
    hasWork.wait(lock, [&] { return ending || !waiting.empty(); });
    if (ending) return;
    auto item = std::move(waiting.front());
    waiting.pop_front();
    running = item.token;
    lock.unlock();
    item.work();
    item.work = nullptr;  // what it captured has gone too when its end is announced
    lock.lock();
    running.reset();
    hasFinished.notify_all();
  }
}

void ThreadSerialQueue::State::drop(std::uint64_t token) {
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

void ThreadSerialQueue::State::end() {
  std::deque<Item> dropped;
  const std::lock_guard lock(mutex);
  dropped.swap(waiting);
  ending = true;
  hasWork.notify_one();
}

ThreadSerialQueue::ThreadSerialQueue(const std::string& label) : state_(std::make_shared<State>()) {
  thread_ = std::thread([state = state_] { state->run(); });
  // The kernel keeps 15 characters: the last word of "com.velloway.pellow.actions" tells most.
  const auto name = label.substr(label.rfind('.') + 1).substr(0, 15);
  pthread_setname_np(thread_.native_handle(), name.c_str());
}

ThreadSerialQueue::~ThreadSerialQueue() {
  state_->end();
  thread_.join();
}

Subscription ThreadSerialQueue::async(Work work) {
  const auto token = state_->add(std::move(work));
  return Subscription([weak = std::weak_ptr(state_), token] {
    if (const auto state = weak.lock()) state->drop(token);
  });
}

}  // namespace pellow
