#pragma once

#include <expected>
#include <functional>
#include <string_view>

#include "base/subscription.h"
#include "platform/ax_element.h"

namespace pellow {

// The way to other applications' windows.
class Accessibility {
 public:
  virtual ~Accessibility() = default;

  // Whether the user allows this process to use the interface. Main thread.
  virtual bool isProcessTrusted() const = 0;

  // The element of the whole system. Any thread.
  virtual AXElement systemWide() = 0;

  // The element of an application, alive or not: calls on it tell. Any thread.
  virtual AXElement application(ProcessID pid) = 0;

  // Calls `handler` on the main queue each time the element posts the notification, until the
  // subscription ends; the handler may end it. A window's element posts "AXUIElementDestroyed" once
  // it is gone. Answers `invalidUIElement` for an element that is gone already and
  // `notificationUnsupported` for a name that the platform does not post. Main thread.
  virtual std::expected<Subscription, AXError> observe(const AXElement& element,
                                                       std::string_view notification,
                                                       std::function<void()> handler) = 0;
};

}  // namespace pellow
