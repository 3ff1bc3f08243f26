#pragma once

#include <atomic>
#include <coroutine>
#include <exception>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "base/subscription.h"
#include "platform/queues.h"

namespace pellow {

// Takes blocking calls off the main thread: they run on a serial queue, one at a time, in the order
// submitted. It adds no time limit: the messaging timeouts bound each call.
//
//   const auto frame = co_await axQueue.ax([&] { return AX::frame(window.element); });
//
// Must outlive every coroutine that waits for it. Main thread.
class AXQueue {
 public:
  // `label` names the serial queue in tools.
  AXQueue(Queues& queues, std::string label)
      : main_(queues.main()), queue_(queues.makeSerialQueue(std::move(label))) {}

  template <class Body>
  class Awaiter;

  // For an `end` that ends waiting coroutines: drops all calls that have not begun before `end`
  // waits for the one that runs.
  template <class End>
  void dropCallsAnd(End end) {
    drops_ = true;
    end();
    drops_ = false;
  }

  // To be awaited at once, in a coroutine on the main thread: runs `body` on the serial queue and
  // resumes on the main queue with its result or exception. A coroutine destroyed while it waits
  // drops a body that has not begun, waits for one that runs, and is not resumed. `body` is
  // destroyed on the main thread.
  template <class Body>
  Awaiter<Body> ax(Body body) {
    return Awaiter<Body>(*this, std::move(body));
  }

 private:
  MainQueue& main_;
  std::atomic<bool> drops_ = false;  // read on the serial queue
  std::unique_ptr<SerialQueue> queue_;
};

template <class Body>
class [[nodiscard]] AXQueue::Awaiter {
 public:
  using Value = std::invoke_result_t<Body&>;
  static_assert(!std::is_reference_v<Value>, "a result travels between threads by value");

  Awaiter(AXQueue& queue, Body body) : queue_(queue), body_(std::move(body)) {}
  Awaiter(const Awaiter&) = delete;
  Awaiter& operator=(const Awaiter&) = delete;

  bool await_ready() const noexcept { return false; }

  void await_suspend(std::coroutine_handle<> awaiting) {
    work_ = queue_.queue_->async([this, awaiting] {
      if (queue_.drops_) return;
      run();
      hopBack_ = queue_.main_.async([awaiting] { awaiting.resume(); });
    });
  }

  Value await_resume() {
    if (!result_->has_value()) std::rethrow_exception(result_->error());
    if constexpr (!std::is_void_v<Value>) return std::move(**result_);
  }

 private:
  void run() {
    try {
      if constexpr (std::is_void_v<Value>) {
        body_();
        result_.emplace();
      } else {
        result_.emplace(body_());
      }
    } catch (...) {
      result_.emplace(std::unexpect, std::current_exception());
    }
  }

  AXQueue& queue_;
  Body body_;
  std::optional<std::expected<Value, std::exception_ptr>> result_;

  // Destroyed in reverse order: the work first, so that it no longer writes `hopBack_`.
  Subscription hopBack_;
  Subscription work_;
};

}  // namespace pellow
