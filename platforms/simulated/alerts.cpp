#include "platforms/simulated/alerts.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platforms/simulated/system.h"

namespace pellow::simulated {

Subscription Alerts::show(Alert alert, std::function<void(std::size_t)> onChosen) {
  if (!system_.portCall("shows the alert \"{}\"", alert.messageText)) return {};
  if (system_.state.frontmost != system_.ownPid()) former_ = system_.state.frontmost;
  system_.change([this](DesktopState& desktop) { desktop.activate(system_.ownPid()); });
  const auto shown = std::make_shared<Shown>(std::move(alert), std::move(onChosen));
  shown_.push_back(shown);
  ++system_.alerts;
  return Subscription([this, shown] {
    shown->onChosen = nullptr;
    if (takeAway(shown)) giveBack();
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
  system_.mainLoop.post([this, shown, index] {
    // The callback may drop the alert's subscription, and show the next one.
    if (const auto onChosen = shown->onChosen) onChosen(index);
    giveBack();
  });
}

bool Alerts::takeAway(const std::shared_ptr<Shown>& shown) {
  if (std::erase(shown_, shown) == 0) return false;
  --system_.alerts;
  return true;
}

void Alerts::giveBack() {
  if (system_.alerts > 0) return;
  const auto former = std::exchange(former_, std::nullopt);
  if (system_.state.frontmost != system_.ownPid()) return;
  const auto* const next = former ? system_.state.application(*former) : nullptr;
  if (!next || next->hidden) return system_.giveWay();
  system_.change([&former](DesktopState& desktop) { desktop.activate(*former); });
}

}  // namespace pellow::simulated
