#include "app/accessibility_permission.h"

#include <utility>

namespace pellow::AccessibilityPermission {

Subscription waitForGrant(const Accessibility& accessibility, MainQueue& mainQueue,
                          Seconds pollInterval, std::function<void()> onGranted) {
  return mainQueue.every(pollInterval, [&accessibility, granted = std::move(onGranted)]() mutable {
    if (!granted || !accessibility.isProcessTrusted()) return;
    std::exchange(granted, nullptr)();
  });
}

}  // namespace pellow::AccessibilityPermission
