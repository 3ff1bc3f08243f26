#include "platforms/macos/foundation/notification.h"

#include <memory>
#include <utility>

#include "platforms/macos/foundation/main_queue.h"

namespace pellow {

// A notification that is being posted while its observer leaves may still reach the block.
Subscription observeNotification(NSNotificationCenter* center, NSNotificationName name,
                                 std::function<void(NSNotification*)> handler) {
  using Handler = std::function<void(NSNotification*)>;
  auto held = std::make_shared<Handler>(std::move(handler));
  const std::weak_ptr<Handler> weak = held;
  id<NSObject> const token = [center addObserverForName:name
                                                 object:nil
                                                  queue:nil
                                             usingBlock:^(NSNotification* notification) {
                                               runInPool([&] {
                                                 if (const auto live = weak.lock())
                                                   (*live)(notification);
                                               });
                                             }];
  return Subscription([center, token, held = std::move(held)]() mutable {
    [center removeObserver:token];
    held.reset();
  });
}

}  // namespace pellow
