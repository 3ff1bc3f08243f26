#include "platforms/simulated/alerts.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platforms/simulated/system.h"

namespace pellow::simulated {

Subscription Alerts::show(Alert alert, std::function<void(std::size_t)> onChosen) {
  const auto shown = std::make_shared<Shown>(std::move(alert), std::move(onChosen));
  shown_.push_back(shown);
  ++system_.alerts;
  return Subscription([this, shown] {
    shown->onChosen = nullptr;
    takeAway(shown);
  });
}

std::vector<Alert> Alerts::showing() const {
  std::vector<Alert> alerts;
  if (system_.processRuns())
    for (const auto& shown : shown_) alerts.push_back(shown->alert);
  return alerts;
}

void Alerts::choose(std::string_view button) {
  if (showing().empty()) throw std::out_of_range("no alert shows");
  const auto shown = shown_.front();
  const auto& buttons = shown->alert.buttons;
  const auto chosen = std::ranges::find(buttons, button);
  if (chosen == buttons.end())
    throw std::out_of_range(
        fmt::format("no button \"{}\" in the alert \"{}\"", button, shown->alert.messageText));
  const auto index = static_cast<std::size_t>(chosen - buttons.begin());
  takeAway(shown);
  system_.mainLoop.post([shown, index] {
    // The callback may drop the alert's subscription.
    if (const auto onChosen = shown->onChosen) onChosen(index);
  });
}

// The program gives way to others with its last alert.
void Alerts::takeAway(const std::shared_ptr<Shown>& shown) {
  if (std::erase(shown_, shown) == 0) return;
  --system_.alerts;
  system_.giveWay();
}

}  // namespace pellow::simulated
