#pragma once

#include <expected>
#include <functional>
#include <string_view>

#include "base/subscription.h"
#include "platform/ax_element.h"
#include "platform/ax_names.h"

namespace pellow {

// The way to other applications' windows. Any thread unless told otherwise.
class Accessibility {
 public:
  virtual ~Accessibility() = default;

  // Whether the user lets this process use Accessibility. Main thread.
  virtual bool isProcessTrusted() const = 0;

  // The same; if not, has the system ask the user in its own words. Main thread.
  virtual bool isProcessTrustedWithPrompt() = 0;

  virtual AXElement systemWide() = 0;

  // The element of an application, running or not: calls on it tell.
  virtual AXElement application(ProcessID pid) = 0;

  // The deepest element at a point of the screen, in Quartz space; `noValue` where there is none.
  // `timeout` is how long the application there may take to answer.
  virtual std::expected<AXElement, AXError> elementAtPosition(const AXElement& systemWide,
                                                              QuartzPoint point,
                                                              Seconds timeout) = 0;

  // Calls `handler` on the main queue with the element that posts the notification, until the
  // subscription ends; the handler may end it. Answers `invalidUIElement` for an element already
  // gone and `notificationUnsupported` for a name it does not post. `timeout` is how long the
  // application may take to accept the observer. Drop the subscription on the main thread.
  //
  //   of a window        `elementDestroyed`       it is gone; once
  //   of an application  `windowMiniaturized`     the window that was minimized, by anybody
  //                      `focusedWindowChanged`   the window that has the focus now
  virtual std::expected<Subscription, AXError> observe(
      const AXElement& element, std::string_view notification,
      std::function<void(const AXElement&)> handler, Seconds timeout) = 0;
};

}  // namespace pellow
