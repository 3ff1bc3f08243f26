#include "base/notification_center.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace pellow {

struct NotificationCenter::Observers {
  struct Observer {
    std::string name;
    std::function<void()> call;
  };
  std::map<std::uint64_t, Observer> byToken;
  std::uint64_t nextToken = 0;
};

NotificationCenter::NotificationCenter() : observers_(std::make_shared<Observers>()) {}
NotificationCenter::~NotificationCenter() = default;

void NotificationCenter::post(std::string_view name) {
  const auto observers = observers_;
  std::vector<std::uint64_t> tokens;
  for (const auto& [token, observer] : observers->byToken)
    if (observer.name == name) tokens.push_back(token);

  for (const auto token : tokens) {
    const auto found = observers->byToken.find(token);
    if (found == observers->byToken.end()) continue;
    const auto call = found->second.call;
    call();
  }
}

Subscription NotificationCenter::observe(std::string name, std::function<void()> observer) {
  const auto token = observers_->nextToken++;
  observers_->byToken.emplace(token, Observers::Observer{std::move(name), std::move(observer)});
  return Subscription([weak = std::weak_ptr(observers_), token] {
    if (const auto observers = weak.lock()) observers->byToken.erase(token);
  });
}

}  // namespace pellow
