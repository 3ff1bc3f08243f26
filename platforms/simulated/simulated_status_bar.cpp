#include "platforms/simulated/simulated_status_bar.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/simulated_menu.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

SimulatedStatusItem::SimulatedStatusItem(SimulatedStatusBar& bar) : bar_(bar) {
  bar_.items_.push_back(this);
}

SimulatedStatusItem::~SimulatedStatusItem() { std::erase(bar_.items_, this); }

std::unique_ptr<StatusItem> SimulatedStatusBar::makeStatusItem() {
  return std::make_unique<SimulatedStatusItem>(*this);
}

const SimulatedStatusItem& SimulatedStatusBar::item() const {
  const auto count = system_.processRuns() ? items_.size() : 0;
  if (count != 1) throw std::out_of_range(fmt::format("{} status items show", count));
  return *items_.front();
}

void SimulatedStatusBar::openMenu() {
  if (!item().menu()) throw std::out_of_range("the status item has no menu");
  system_.mainLoop.post([this] {
    if (items_.size() != 1 || !items_.front()->menu()) return;
    const auto menu = items_.front()->menu();
    menu_.open(menu());
  });
}

}  // namespace pellow::simulated
