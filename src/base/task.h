#pragma once

#include <coroutine>
#include <cstdint>
#include <exception>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

// Coroutines for the main thread. A `Task` is lazy: it begins when it is awaited, once, and its
// result or exception goes to whoever awaits it. A `TaskScope` starts and owns tasks that nobody
// awaits: they end with it, wherever they are suspended.

namespace pellow {

template <class T = void>
class Task;

namespace detail {

struct ResumeContinuation {
  bool await_ready() const noexcept { return false; }
  template <class Promise>
  std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> finished) const noexcept {
    return finished.promise().continuation;
  }
  void await_resume() const noexcept {}
};

struct TaskPromiseBase {
  std::coroutine_handle<> continuation = std::noop_coroutine();

  std::suspend_always initial_suspend() const noexcept { return {}; }
  ResumeContinuation final_suspend() const noexcept { return {}; }
};

template <class T>
struct TaskPromise : TaskPromiseBase {
  std::variant<std::monostate, T, std::exception_ptr> result;

  Task<T> get_return_object() noexcept;
  void unhandled_exception() noexcept { result.template emplace<2>(std::current_exception()); }
  template <class Value>
  void return_value(Value&& value) {
    result.template emplace<1>(std::forward<Value>(value));
  }
  T take() {
    if (auto* error = std::get_if<2>(&result)) std::rethrow_exception(*error);
    return std::move(std::get<1>(result));
  }
};

template <>
struct TaskPromise<void> : TaskPromiseBase {
  std::exception_ptr error;

  Task<void> get_return_object() noexcept;
  void unhandled_exception() noexcept { error = std::current_exception(); }
  void return_void() const noexcept {}
  void take() const {
    if (error) std::rethrow_exception(error);
  }
};

}  // namespace detail

template <class T>
class [[nodiscard]] Task {
 public:
  using promise_type = detail::TaskPromise<T>;
  using Handle = std::coroutine_handle<promise_type>;

  explicit Task(Handle handle) noexcept : handle_(handle) {}
  Task(Task&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Task& operator=(Task&&) = delete;
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;
  ~Task() {
    if (handle_) handle_.destroy();
  }

  auto operator co_await() && noexcept {
    struct Awaiter {
      Handle task;

      bool await_ready() const noexcept { return false; }
      std::coroutine_handle<> await_suspend(std::coroutine_handle<> awaiting) const noexcept {
        task.promise().continuation = awaiting;
        return task;
      }
      T await_resume() const { return task.promise().take(); }
    };
    return Awaiter{handle_};
  }

 private:
  Handle handle_;
};

namespace detail {

template <class T>
Task<T> TaskPromise<T>::get_return_object() noexcept {
  return Task<T>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

inline Task<void> TaskPromise<void>::get_return_object() noexcept {
  return Task<void>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

}  // namespace detail

// Owns tasks that were started and not awaited. Main thread.
class TaskScope {
 public:
  using OnFailure = std::function<void(std::exception_ptr)>;

  // `onFailure` is called with an exception that leaves a started task.
  explicit TaskScope(OnFailure onFailure) : onFailure_(std::move(onFailure)) {}
  TaskScope(const TaskScope&) = delete;
  TaskScope& operator=(const TaskScope&) = delete;
  ~TaskScope() { cancel(); }

  // Runs the task up to its first suspension and keeps it until it is done.
  void start(Task<void> task) { run(std::move(task)); }

  // Ends every task where it is suspended, newest first: drops what it waits for and destroys its
  // locals. None of its tasks may call this.
  void cancel() {
    while (!running_.empty()) {
      const auto newest = std::prev(running_.end());
      const auto task = newest->second;
      running_.erase(newest);
      task.destroy();
    }
  }

  bool isIdle() const { return running_.empty(); }

 private:
  // The frame around a started task; frees itself at the end.
  struct Root {
    struct promise_type {
      TaskScope& scope;
      const std::uint64_t number;

      promise_type(TaskScope& owner, const Task<void>&) : scope(owner), number(++owner.started_) {
        scope.running_.emplace(number, handle());
      }
      std::coroutine_handle<promise_type> handle() {
        return std::coroutine_handle<promise_type>::from_promise(*this);
      }
      Root get_return_object() const noexcept { return {}; }
      std::suspend_never initial_suspend() const noexcept { return {}; }
      std::suspend_never final_suspend() noexcept {
        scope.running_.erase(number);
        return {};
      }
      void return_void() const noexcept {}
      void unhandled_exception() const { scope.onFailure_(std::current_exception()); }
    };
  };

  Root run(Task<void> task) { co_await std::move(task); }

  OnFailure onFailure_;
  std::uint64_t started_ = 0;
  std::map<std::uint64_t, std::coroutine_handle<>> running_;  // in the order they started
};

}  // namespace pellow
