#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "base/subscription.h"

namespace pellow {

template <class Signature>
class HandlerList;

// Handlers that may come and go even during a call: one that leaves is not called again, one that
// comes is called from the next time on. The list itself may go, too. Calling allocates nothing.
// Main thread.
template <class Result, class... Args>
class HandlerList<Result(Args...)> {
 public:
  using Handler = std::function<Result(Args...)>;

  Subscription add(Handler handler) {
    auto entry = std::make_shared<Entry>(std::move(handler));
    const std::weak_ptr weak = entry;
    state_->entries.push_back(std::move(entry));
    return Subscription([list = std::weak_ptr(state_), weak] {
      if (const auto leaving = weak.lock()) leaving->isLive = false;
      if (const auto state = list.lock()) state->sweep();
    });
  }

  bool isEmpty() const {
    return std::ranges::none_of(state_->entries, [](const auto& entry) { return entry->isLive; });
  }

  // Calls the handlers, oldest first.
  void notify(Args... args) const {
    const Calling calling(state_);
    const auto& entries = calling.state->entries;
    const auto count = entries.size();
    for (std::size_t i = 0; i < count; ++i)
      if (const auto entry = entries[i]; entry->isLive) entry->handler(args...);
  }

  // Calls the handlers, newest first, until one answers false; true when none did.
  bool newestFirst(Args... args) const {
    const Calling calling(state_);
    const auto& entries = calling.state->entries;
    for (auto i = entries.size(); i > 0; --i)
      if (const auto entry = entries[i - 1]; entry->isLive && !entry->handler(args...))
        return false;
    return true;
  }

 private:
  struct Entry {
    explicit Entry(Handler callee) : handler(std::move(callee)) {}
    Handler handler;
    bool isLive = true;
  };
  struct State {
    std::vector<std::shared_ptr<Entry>> entries;
    int callsUnderWay = 0;

    void sweep() {
      if (callsUnderWay > 0) return;
      // Handlers die outside the list: one may own the subscription of another.
      std::vector<std::shared_ptr<Entry>> ended;
      for (const auto& entry : entries)
        if (!entry->isLive) ended.push_back(entry);
      std::erase_if(entries, [](const auto& entry) { return !entry->isLive; });
    }
  };
  // Keeps the entries in their places while handlers run.
  struct Calling {
    explicit Calling(std::shared_ptr<State> list) : state(std::move(list)) {
      ++state->callsUnderWay;
    }
    Calling(const Calling&) = delete;
    Calling& operator=(const Calling&) = delete;
    ~Calling() {
      --state->callsUnderWay;
      state->sweep();
    }
    std::shared_ptr<State> state;
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace pellow
