#include "views/alert_presenter.h"

#include <coroutine>
#include <utility>

namespace pellow {

// One alert that a coroutine waits for; lives in that coroutine.
struct AlertPresenter::Request {
  AlertPresenter& presenter;
  Alert alert;
  std::coroutine_handle<> waiter = nullptr;
  std::size_t chosen = 0;

  Request(AlertPresenter& owner, Alert what) : presenter(owner), alert(std::move(what)) {}
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;
  ~Request() { presenter.leave(*this); }

  bool await_ready() const noexcept { return false; }
  void await_suspend(std::coroutine_handle<> coroutine) {
    waiter = coroutine;
    presenter.waiting_.push_back(this);
    if (presenter.waiting_.size() == 1) presenter.showNext();
  }
  std::size_t await_resume() const noexcept { return chosen; }
};

Task<std::size_t> AlertPresenter::present(Alert alert) {
  co_return co_await Request(*this, std::move(alert));
}

void AlertPresenter::showNext() {
  if (waiting_.empty()) return;
  auto& request = *waiting_.front();
  shown_ = alerts_.show(request.alert, [this, &request](std::size_t button) {
    request.chosen = button;
    const auto waiter = request.waiter;
    leave(request);
    waiter.resume();
  });
}

void AlertPresenter::leave(Request& request) {
  if (waiting_.empty()) return;
  const bool wasShown = waiting_.front() == &request;
  waiting_.remove(&request);
  if (!wasShown) return;
  shown_.cancel();
  if (onClosed) onClosed();
  showNext();
}

}  // namespace pellow
