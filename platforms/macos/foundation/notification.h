#pragma once

#import <Foundation/Foundation.h>

#include <functional>

#include "base/subscription.h"

namespace pellow {

// Calls the handler for every notification of this name, whoever posts it, on the thread that does:
// the main thread for those of AppKit and NSWorkspace. Main thread.
Subscription observeNotification(NSNotificationCenter* center, NSNotificationName name,
                                 std::function<void(NSNotification*)> handler);

}  // namespace pellow
