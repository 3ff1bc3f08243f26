#pragma once

#include <functional>
#include <utility>

namespace pellow {

// Something that goes on for as long as somebody wants it: an observer, an event monitor, a timer,
// delayed work. Whoever wants it keeps the subscription; dropping it ends the thing, and nothing of
// it runs afterwards. Main thread, unless its maker says otherwise.
class [[nodiscard]] Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::move_only_function<void()> end) : end_(std::move(end)) {}

  Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
  Subscription& operator=(Subscription&& other) noexcept {
    if (this != &other) {
      cancel();
      end_ = std::exchange(other.end_, nullptr);
    }
    return *this;
  }
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;
  ~Subscription() { cancel(); }

  // Ends it now; a second call does nothing.
  void cancel() {
    if (auto end = std::exchange(end_, nullptr)) end();
  }

  explicit operator bool() const { return end_ != nullptr; }

 private:
  std::move_only_function<void()> end_;
};

}  // namespace pellow
