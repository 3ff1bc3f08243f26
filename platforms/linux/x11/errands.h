#pragma once

#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace pellow {

// What other threads leave to be done on the main thread, with the next events.
class Errands {
 public:
  // Made on the main thread. `wakeUp` is an eventfd that the main loop waits for.
  explicit Errands(int wakeUp) : wakeUp_(wakeUp) {}

  bool isMainThread() const { return std::this_thread::get_id() == mainThread_; }

  // Any thread.
  void leave(std::function<void()> errand);

  // Main thread.
  void run();

 private:
  const int wakeUp_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  std::mutex mutex_;
  std::vector<std::function<void()>> errands_;
};

}  // namespace pellow
