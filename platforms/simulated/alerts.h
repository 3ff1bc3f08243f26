#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/alerts.h"
#include "platform/ax_element.h"

namespace pellow::simulated {

class System;

// Alerts that show until somebody answers them.
class Alerts final : public pellow::Alerts {
 public:
  explicit Alerts(System& system) : system_(system) {}

  Subscription show(Alert alert, std::function<void(std::size_t button)> onChosen) override;

  // The oldest first; none once the process has ended.
  std::vector<Alert> showing() const;
  // Takes the oldest alert away and tells its owner. Throws when there is no such button.
  void choose(std::string_view button);

 private:
  struct Shown {
    Alert alert;
    std::function<void(std::size_t)> onChosen;  // empty once nobody wants the answer
  };

  bool takeAway(const std::shared_ptr<Shown>& shown);
  void giveBack();

  System& system_;
  std::vector<std::shared_ptr<Shown>> shown_;  // the oldest first
  std::optional<ProcessID> former_;            // was in front before them
};

}  // namespace pellow::simulated
