#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "base/subscription.h"

namespace pellow {

// Handlers that come and go, also while they are called: one that leaves is not called any more,
// one that comes is called from the next time on. Calling allocates nothing. Main thread.
template <class Signature>
class HandlerList {
 public:
  using Handler = std::function<Signature>;

  Subscription add(Handler handler) {
    auto entry = std::make_shared<Entry>(std::move(handler));
    state_->entries.push_back(entry);
    return Subscription([state = state_, entry = std::move(entry)] {
      entry->isLive = false;
      state->sweep();
    });
  }

  bool isEmpty() const {
    return std::ranges::none_of(state_->entries, [](const auto& entry) { return entry->isLive; });
  }

  // Visits the handlers from the oldest to the newest.
  template <class Visitor>
  void forEach(Visitor visit) const {
    const Calling calling(state_);
    const auto count = state_->entries.size();
    for (std::size_t i = 0; i < count; ++i) callAt(i, visit);
  }

  // Visits the handlers from the newest to the oldest until one visit answers false; whether none
  // did.
  template <class Visitor>
  bool newestFirst(Visitor visit) const {
    const Calling calling(state_);
    for (auto i = state_->entries.size(); i > 0; --i)
      if (!callAt(i - 1, visit)) return false;
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
  // Keeps the entries in their places while handlers run, even if the list itself is destroyed.
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

  template <class Visitor>
  bool callAt(std::size_t index, Visitor& visit) const {
    const auto entry = state_->entries[index];  // survives its own leaving
    if (!entry->isLive) return true;
    if constexpr (std::is_void_v<decltype(visit(entry->handler))>) {
      visit(entry->handler);
      return true;
    } else {
      return visit(entry->handler);
    }
  }

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace pellow
