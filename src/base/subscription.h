#pragma once

#include <utility>

#include "base/function.h"

namespace pellow {

// An observer, an event monitor, a timer, delayed work: something that goes on until its
// subscription is dropped. After that nothing of it runs. Main thread, unless its maker says
// otherwise.
class [[nodiscard]] Subscription {
 public:
  Subscription() = default;
  explicit Subscription(Function<void()> end) : end_(std::move(end)) {}

  Subscription(Subscription&&) noexcept = default;
  Subscription& operator=(Subscription&& other) noexcept {
    if (this != &other) {
      cancel();
      end_ = std::move(other.end_);
    }
    return *this;
  }
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;
  ~Subscription() { cancel(); }

  // Ends it now; a second call does nothing.
  void cancel() {
    if (auto end = std::move(end_)) end();
  }

  explicit operator bool() const { return static_cast<bool>(end_); }

 private:
  Function<void()> end_;
};

}  // namespace pellow
