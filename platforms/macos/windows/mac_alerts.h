#pragma once

#include <memory>

#include "platform/alerts.h"

namespace pellow {

class Foreground;

// Alerts as windows of their own. A modal session would be a nested loop: begun in a coroutine on
// the main queue, it would stop that queue until the answer.
class MacAlerts final : public Alerts {
 public:
  explicit MacAlerts(std::shared_ptr<Foreground> foreground);

  Subscription show(Alert alert, std::function<void(std::size_t)> onChosen) override;

 private:
  struct Stage;
  struct Showing;

  std::shared_ptr<Stage> stage_;
};

}  // namespace pellow
