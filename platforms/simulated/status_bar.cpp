#include "platforms/simulated/status_bar.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/open_menu.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

StatusItem::StatusItem(StatusBar& bar) : bar_(bar) { bar_.items_.push_back(this); }

StatusItem::~StatusItem() { std::erase(bar_.items_, this); }

bool StatusItem::isShown() const { return bar_.hasPlace_; }

std::unique_ptr<pellow::StatusItem> StatusBar::makeStatusItem() {
  return std::make_unique<StatusItem>(*this);
}

const StatusItem& StatusBar::item() const {
  const auto count = system_.processRuns() ? items_.size() : 0;
  if (count != 1) throw std::out_of_range(fmt::format("{} status items show", count));
  return *items_.front();
}

void StatusBar::openMenu() {
  if (!item().menu()) throw std::out_of_range("the status item has no menu");
  system_.mainLoop.post([this] {
    if (items_.size() != 1 || !items_.front()->menu()) return;
    const auto menu = items_.front()->menu();
    opened_ = menu_.open(menu());
  });
}

}  // namespace pellow::simulated
