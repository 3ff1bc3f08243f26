#include "app/accessibility_permission.h"

#include <memory>
#include <utility>

namespace pellow::AccessibilityPermission {

Subscription waitForGrant(const Accessibility& accessibility, MainQueue& mainQueue,
                          Seconds pollInterval, std::function<void()> onGranted) {
  const auto pending = std::make_shared<std::function<void()>>(std::move(onGranted));
  return mainQueue.every(pollInterval, [&accessibility, pending] {
    if (!*pending || !accessibility.isProcessTrusted()) return;
    const auto granted = std::exchange(*pending, nullptr);
    granted();
  });
}

}  // namespace pellow::AccessibilityPermission
