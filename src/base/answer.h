#pragma once

#include <coroutine>
#include <functional>
#include <optional>
#include <utility>

#include "base/subscription.h"

namespace pellow {

// Awaits, in a coroutine, an answer that a callback brings once, later, on the main queue:
//
//   const auto windows = co_await Answer<Windows>([&](auto onWindows) {
//     return screenCapture.shareableWindows(std::move(onWindows));
//   });
//
// A coroutine that ends while it waits drops the question. Main thread.
template <class Value>
class [[nodiscard]] Answer {
 public:
  using Ask = std::function<Subscription(std::function<void(Value)> onAnswer)>;

  explicit Answer(Ask ask) : ask_(std::move(ask)) {}
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;

  bool await_ready() const noexcept { return false; }

  void await_suspend(std::coroutine_handle<> waiter) {
    asked_ = ask_([this, waiter](Value value) {
      value_ = std::move(value);
      waiter.resume();
    });
  }

  Value await_resume() { return std::move(*value_); }

 private:
  Ask ask_;
  std::optional<Value> value_;
  Subscription asked_;
};

}  // namespace pellow
