#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace pellow {

template <class Signature>
class Function;

// A function object that need not be copyable, as not every standard library has one. Empty by
// default and after a move; an empty one must not be called.
template <class Result, class... Args>
class Function<Result(Args...)> {
 public:
  Function() = default;
  Function(std::nullptr_t) {}
  template <class F>
    requires(!std::same_as<std::remove_cvref_t<F>, Function> &&
             std::is_invocable_r_v<Result, std::decay_t<F>&, Args...>)
  Function(F&& callee)
      : callee_(std::make_unique<Held<std::decay_t<F>>>(std::forward<F>(callee))) {}

  Result operator()(Args... args) { return callee_->call(std::forward<Args>(args)...); }
  explicit operator bool() const { return callee_ != nullptr; }

 private:
  struct Callee {
    virtual ~Callee() = default;
    virtual Result call(Args... args) = 0;
  };
  template <class F>
  struct Held final : Callee {
    explicit Held(F&& callee) : function(std::move(callee)) {}
    explicit Held(const F& callee) : function(callee) {}
    Result call(Args... args) override { return function(std::forward<Args>(args)...); }
    F function;
  };

  std::unique_ptr<Callee> callee_;
};

}  // namespace pellow
