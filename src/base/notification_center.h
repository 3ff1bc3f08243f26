#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/subscription.h"

namespace pellow {

// Named announcements inside the program, such as "pellow.tabsDidChange". Main thread.
class NotificationCenter {
 public:
  NotificationCenter();
  ~NotificationCenter();
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  // Calls every observer of the name, in the order in which they came, before it returns.
  // Observers may post, observe and leave meanwhile: one that leaves is not called any more, one
  // that comes is called from the next post on.
  void post(std::string_view name);

  // Calls `observer` at every post of `name` until the subscription ends.
  Subscription observe(std::string name, std::function<void()> observer);

 private:
  struct Observers;
  std::shared_ptr<Observers> observers_;
};

}  // namespace pellow
