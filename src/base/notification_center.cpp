#include "base/notification_center.h"

#include <utility>

namespace pellow {

void NotificationCenter::post(std::string_view name) {
  const auto found = observers_.find(name);
  if (found != observers_.end()) found->second.notify();
}

Subscription NotificationCenter::observe(std::string_view name, std::function<void()> observer) {
  return observers_[std::string(name)].add(std::move(observer));
}

}  // namespace pellow
