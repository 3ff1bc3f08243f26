#pragma once

#include <expected>
#include <functional>
#include <string_view>

#include "base/subscription.h"
#include "platform/ax_element.h"
#include "platform/ax_names.h"

namespace pellow {

// The way to other applications' windows.
class Accessibility {
 public:
  virtual ~Accessibility() = default;

  // Whether the user allows this process to use the interface. Main thread.
  virtual bool isProcessTrusted() const = 0;

  // The same; when it does not, lets the system ask the user in its own words. Main thread.
  virtual bool isProcessTrustedWithPrompt() = 0;

  // The element of the whole system. Any thread.
  virtual AXElement systemWide() = 0;

  // The element of an application, alive or not: calls on it tell. Any thread.
  virtual AXElement application(ProcessID pid) = 0;

  // The deepest element at a point of the screen, in Quartz space; `noValue` where there is none.
  // The application whose element it is may take so long to answer. Any thread.
  virtual std::expected<AXElement, AXError> elementAtPosition(const AXElement& systemWide,
                                                              QuartzPoint point,
                                                              Seconds timeout) = 0;

  // Calls `handler` on the main queue with the element that posts the notification, until the
  // subscription ends; the handler may end it. Answers `invalidUIElement` for an element that is
  // gone already and `notificationUnsupported` for a name that it does not post. The application
  // may take so long to take the observer in. Any thread; the subscription is dropped on the main
  // thread.
  //
  //   of a window        `elementDestroyed`       it is gone; once
  //   of an application  `windowMiniaturized`     the window that was minimized, by anybody
  //                      `focusedWindowChanged`   the window that has the focus now
  virtual std::expected<Subscription, AXError> observe(
      const AXElement& element, std::string_view notification,
      std::function<void(const AXElement&)> handler, Seconds timeout) = 0;
};

}  // namespace pellow
