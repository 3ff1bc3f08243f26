#pragma once

#import <ApplicationServices/ApplicationServices.h>

#include <expected>
#include <functional>
#include <string_view>

#include "base/subscription.h"
#include "platform/ax_element.h"

namespace pellow {

// Observes one notification of one element, as `Accessibility::observe` tells. Each subscription
// has an observer of its own, since one observer takes a notification of an element only once.
std::expected<Subscription, AXError> observeElement(const AXElement& element,
                                                    std::string_view notification,
                                                    std::function<void(const AXElement&)> handler,
                                                    Seconds timeout);

}  // namespace pellow
