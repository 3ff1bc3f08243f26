#pragma once

#include <utility>

#include "base/function.h"

namespace pellow {

// Something that goes on for as long as somebody wants it: an observer, an event monitor, a timer,
// delayed work. Whoever wants it keeps the subscription; dropping it ends the thing, and nothing of
// it runs afterwards. Main thread, unless its maker says otherwise.
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
