#include "engine/parking_upkeep.h"

#include <algorithm>
#include <set>
#include <vector>

#include "access/pellow_error.h"
#include "base/scoped_flag.h"

namespace pellow {
namespace {

// How long the system may move windows by itself after a change of the displays.
constexpr Seconds timeToArrange = 1;
constexpr Seconds patience = 1;  // with one application, while others wait
constexpr Seconds askAgainEvery = 5;

// One question to each window, and none to an application that did not answer one.
std::vector<WindowState> statesOf(const std::vector<TabItem>& tabs) {
  std::vector<WindowState> states;
  std::set<ProcessID> silent;
  for (const auto& tab : tabs) {
    auto& state = states.emplace_back(WindowState{.answers = false});
    if (!silent.contains(tab.window.pid)) state = tab.window.state(patience);
    if (!state.answers) silent.insert(tab.window.pid);
  }
  return states;
}

}  // namespace

void ParkingUpkeep::start() {
  changes_ = around_.screens.onDidChangeParameters([this] {
    soon_ = around_.mainQueue.async([this] { begin(); });
    beginLater();
  });
}

void ParkingUpkeep::beginLater() {
  later_ = around_.mainQueue.after(timeToArrange, [this] { begin(); });
}

void ParkingUpkeep::begin() {
  if (isUnderWay_) return beginLater();
  if (around_.displays.frames().empty() || around_.workspace.keepsWindowsOnDisplays()) return;
  around_.tasks.start(parkAnew());
}

// Records, then moves. A window whose application does not answer keeps the record that it has; one
// that the user brings back meanwhile is left alone.
Task<> ParkingUpkeep::parkAnew() {
  const ScopedFlag underWay(isUnderWay_);
  auto tabs = around_.tabs.tabs();
  std::erase_if(tabs, [](const TabItem& tab) {
    return tab.mechanism != Mechanism::offscreen || !tab.originalFrame;
  });
  const auto states = co_await around_.axQueue.ax([&] { return statesOf(tabs); });
  std::vector<ParkedWindows::Place> places;
  for (std::size_t i = 0; i < tabs.size(); ++i) {
    const auto& frame = states[i].frame;
    const auto target = place(tabs[i]);
    if (frame && frame->origin != target && around_.tabs.tab(tabs[i].id))
      places.push_back({tabs[i], target});
  }
  if (std::ranges::all_of(states, &WindowState::answers))
    askAgain_.cancel();
  else if (!askAgain_)
    askAgain_ = around_.mainQueue.every(askAgainEvery, [this] { begin(); });
  // Also when the task is ended in the middle.
  const struct Ending {
    ParkedWindows& parked;
    ~Ending() { parked.haveMoved(); }
  } ending{around_.parkedWindows};
  if (!around_.parkedWindows.recordMove(places)) co_return;
  for (const auto& [tab, target] : places)
    if (around_.tabs.tab(tab.id)) co_await move(tab, target);
}

Task<> ParkingUpkeep::move(const TabItem& tab, QuartzPoint target) {
  // Also when the task is ended in the middle.
  const struct Ending {
    std::optional<TabItem>& moving;
    ~Ending() { moving.reset(); }
  } ending{moving_};
  moving_ = tab;
  try {
    const auto taken = co_await around_.axQueue.ax(
        [&] { return tab.window.move(target, Verify::yes, around_.clock); });
    const bool isHidden = around_.displays.isHidden({taken, tab.originalFrame->size});
    if (!isHidden && target == place(tab) && around_.tabs.tab(tab.id)) onStaysInSight(tab.id);
  } catch (const PellowError& error) {
    around_.log.standard("{}", error.errorDescription());
  }
}

QuartzPoint ParkingUpkeep::place(const TabItem& tab) const {
  return around_.places.parkOrigin(*tab.originalFrame, parkingSide(around_.zones.zone(tab.zoneID)));
}

}  // namespace pellow
