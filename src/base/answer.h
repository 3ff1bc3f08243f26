#pragma once

#include <coroutine>
#include <functional>
#include <optional>
#include <utility>

#include "base/subscription.h"

namespace pellow {

// Waits in a coroutine for something that answers once by a callback on the main queue, later:
//
//   const auto windows = co_await Answer<Windows>([&](auto onWindows) {
//     return screenCapture.shareableWindows(std::move(onWindows));
//   });
//
// A coroutine that ends while it waits gives the question up. Main thread.
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
