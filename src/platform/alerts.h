#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/subscription.h"

namespace pellow {

enum class AlertStyle { informational, warning };

struct Alert {
  AlertStyle style = AlertStyle::informational;
  std::string messageText;
  std::string informativeText;
  std::vector<std::string> buttons;  // the first is the default; at least one

  bool operator==(const Alert&) const = default;
};

// Main thread.
class Alerts {
 public:
  virtual ~Alerts() = default;

  // Shows an alert in front and calls `onChosen` once, later, with the index of the button. Closing
  // the alert counts as its last button; dropping the subscription takes it away.
  virtual Subscription show(Alert alert, std::function<void(std::size_t button)> onChosen) = 0;
};

}  // namespace pellow
