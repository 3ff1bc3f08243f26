#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <ranges>
#include <utility>
#include <vector>

#include "base/subscription.h"

namespace pellow::simulated {

// Callbacks, each for as long as its subscription lasts, the oldest first. Main thread.
template <class... Args>
class Observers {
 public:
  using Observer = std::function<void(Args...)>;

  Subscription add(Observer observer) {
    const auto token = nextToken_++;
    observers_->emplace(token, std::move(observer));
    return Subscription([weak = std::weak_ptr(observers_), token] {
      // The observer may own what drops the next subscription: it dies outside of the map.
      if (const auto observers = weak.lock()) const auto dropped = observers->extract(token);
    });
  }

  bool isEmpty() const { return observers_->empty(); }

  // Calls those that are there now and have not left when their turn comes.
  void notify(Args... args) const {
    const auto observers = observers_;
    std::vector<std::uint64_t> tokens;
    for (const auto token : std::views::keys(*observers)) tokens.push_back(token);
    for (const auto token : tokens) {
      const auto found = observers->find(token);
      if (found == observers->end()) continue;
      const auto observer = found->second;
      observer(args...);
    }
  }

 private:
  std::shared_ptr<std::map<std::uint64_t, Observer>> observers_ =
      std::make_shared<std::map<std::uint64_t, Observer>>();
  std::uint64_t nextToken_ = 0;
};

}  // namespace pellow::simulated
