#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "base/handler_list.h"
#include "base/subscription.h"

namespace pellow {

// Named announcements inside the program, such as "pellow.tabsDidChange". Main thread.
class NotificationCenter {
 public:
  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  // Calls every observer of the name, oldest first, before it returns. Observers may post, observe
  // and leave during the call.
  void post(std::string_view name);

  // Calls `observer` at every post of `name` until the subscription ends.
  Subscription observe(std::string_view name, std::function<void()> observer);

 private:
  std::map<std::string, HandlerList<void()>, std::less<>> observers_;
};

}  // namespace pellow
