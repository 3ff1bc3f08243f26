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

  // Activates this process, shows an alert in front and calls `onChosen` with the index of the
  // button, later and once; a closed window counts as the last button. Dropping the subscription
  // takes the alert away. With the last alert this process hands its activation, if it still has
  // it, back to the application that was in front before, unless that has ended or is hidden.
  virtual Subscription show(Alert alert, std::function<void(std::size_t button)> onChosen) = 0;
};

}  // namespace pellow
