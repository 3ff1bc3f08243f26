#include "platforms/simulated/colour_panel.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/system.h"

namespace pellow::simulated {

Subscription ColourPanel::show(Colour colour, std::function<void(Colour)> onChange) {
  if (!system_.portCall("shows the colour panel")) return {};
  if (shown_) shown_->onChange = nullptr;
  const auto shown = std::make_shared<Shown>(colour, std::move(onChange));
  shown_ = shown;
  return Subscription([shown] { shown->onChange = nullptr; });
}

bool ColourPanel::isVisible() const { return shown_ && system_.processRuns(); }
Colour ColourPanel::colour() const { return shown().colour; }

void ColourPanel::pick(Colour colour) {
  shown().colour = colour;
  system_.mainLoop.post([shown = shown_, colour] {
    // The callback may drop its own subscription.
    if (const auto onChange = shown->onChange) onChange(colour);
  });
}

void ColourPanel::close() {
  shown();
  shown_ = nullptr;
}

ColourPanel::Shown& ColourPanel::shown() const {
  if (!isVisible()) throw std::out_of_range("the colour panel does not show");
  return *shown_;
}

}  // namespace pellow::simulated
