#include "platforms/simulated/simulated_colour_panel.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

Subscription SimulatedColourPanel::show(Colour colour, std::function<void(Colour)> onChange) {
  if (!system_.portCall("shows the colour panel")) return {};
  if (shown_) shown_->onChange = nullptr;
  const auto shown = std::make_shared<Shown>(colour, std::move(onChange));
  shown_ = shown;
  return Subscription([shown] { shown->onChange = nullptr; });
}

bool SimulatedColourPanel::isVisible() const { return shown_ && system_.processRuns(); }
Colour SimulatedColourPanel::colour() const { return shown().colour; }

void SimulatedColourPanel::pick(Colour colour) {
  shown().colour = colour;
  system_.mainLoop.post([shown = shown_, colour] {
    // The callback may drop its own subscription.
    if (const auto onChange = shown->onChange) onChange(colour);
  });
}

void SimulatedColourPanel::close() {
  shown();
  shown_ = nullptr;
}

SimulatedColourPanel::Shown& SimulatedColourPanel::shown() const {
  if (!isVisible()) throw std::out_of_range("the colour panel does not show");
  return *shown_;
}

}  // namespace pellow::simulated
