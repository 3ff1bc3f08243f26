#pragma once

#include "platform/alerts.h"
#include "platform/queues.h"
#include "platforms/linux/qt/window_hints.h"

namespace pellow {

// Alerts as windows of their own, which stop nothing else. Window managers give the keyboard back
// by themselves to the window that had it before. A key that was meant for that one answers none.
class QtAlerts final : public Alerts {
 public:
  explicit QtAlerts(MainQueue& queue) : queue_(queue) {}

  Subscription show(Alert alert, std::function<void(std::size_t)> onChosen) override;

 private:
  MainQueue& queue_;
  WindowHints hints_;
};

}  // namespace pellow
