#pragma once

#include <functional>

#include "base/subscription.h"
#include "platform/accessibility.h"
#include "platform/queues.h"

namespace pellow::AccessibilityPermission {

// Checks every `pollInterval`, without end, whether the process is trusted for Accessibility, and
// calls `onGranted` once it is. Main thread.
Subscription waitForGrant(const Accessibility& accessibility, MainQueue& mainQueue,
                          Seconds pollInterval, std::function<void()> onGranted);

}  // namespace pellow::AccessibilityPermission
