#include "platforms/simulated/simulated_window.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/simulated_accessibility.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

WindowState& SimulatedWindow::state() const {
  if (auto* window = system_->state.window(id_)) return *window;
  throw std::out_of_range(fmt::format("window {} is gone", id_));
}

AXElement SimulatedWindow::element() const { return windowElement(*system_, id_); }

bool SimulatedWindow::exists() const { return system_->state.window(id_) != nullptr; }
bool SimulatedWindow::isVisible() const { return exists() && system_->state.isVisible(state()); }
double SimulatedWindow::shareOnDisplays() const {
  return isVisible() ? system_->state.shareOnDisplays(frame()) : 0;
}
bool SimulatedWindow::isMinimized() const { return state().minimized; }
std::optional<Actor> SimulatedWindow::minimizedBy() const { return state().minimizedBy; }
std::optional<Actor> SimulatedWindow::movedBy() const { return state().movedBy; }
bool SimulatedWindow::hasFocus() const { return system_->state.focusedWindow() == id_; }
bool SimulatedWindow::isInFront() const {
  const auto& desktop = system_->state;
  for (const auto& window : desktop.windows)
    if (desktop.isVisible(window)) return window.id == id_;
  return false;
}
QuartzRect SimulatedWindow::frame() const { return state().frame; }
AppKitPoint SimulatedWindow::minimizeButton() const {
  const auto button =
      system_->state.flip().toAppKit(frameOf(WindowPart::minimizeButton, state().frame));
  return {button.midX(), button.midY()};
}
std::string SimulatedWindow::title() const { return state().title; }
ProcessID SimulatedWindow::pid() const { return state().pid; }

void SimulatedWindow::moveTo(QuartzPoint origin) const {
  state().frame.origin = origin;
  state().movedBy = Actor::user;
}
void SimulatedWindow::resize(Size size) const { state().frame.size = size; }
void SimulatedWindow::rename(std::string title) const { state().title = std::move(title); }
void SimulatedWindow::does(void (DesktopState::*verb)(WindowID)) const {
  const auto id = state().id;
  system_->change([&](DesktopState& desktop) { (desktop.*verb)(id); });
}

void SimulatedWindow::minimize() const { does(&DesktopState::minimize); }
void SimulatedWindow::unminimize() const { does(&DesktopState::unminimize); }
void SimulatedWindow::raise() const { does(&DesktopState::raise); }
void SimulatedWindow::chooseFromWindowMenu() const { does(&DesktopState::choose); }
void SimulatedWindow::close() const { does(&DesktopState::close); }

SimulatedWindow SimulatedWindow::answersAfter(Seconds delay) const {
  state().manners.answersAfter = delay;
  return *this;
}

SimulatedWindow SimulatedWindow::actsLate() const {
  state().manners.actsLate = true;
  return *this;
}

SimulatedWindow SimulatedWindow::refusesToMove(bool refuses) const {
  state().manners.refusesToMove = refuses;
  return *this;
}

SimulatedWindow SimulatedWindow::clampsToDisplay() const {
  state().manners.clampsToDisplay = true;
  return *this;
}

SimulatedWindow SimulatedWindow::snapsToGrid(double step) const {
  state().manners.gridStep = step;
  return *this;
}

SimulatedWindow SimulatedWindow::movesTo(std::function<QuartzPoint(QuartzPoint)> moves) const {
  state().manners.moves = std::move(moves);
  return *this;
}

SimulatedWindow SimulatedWindow::fails(std::string name, AXError error,
                                       std::optional<AXCall> call) const {
  state().manners.faults.push_back({std::move(name), call, error, false});
  return *this;
}

SimulatedWindow SimulatedWindow::failsNext(std::string name, AXError error,
                                           std::optional<AXCall> call) const {
  state().manners.faults.push_back({std::move(name), call, error, true});
  return *this;
}

SimulatedWindow SimulatedWindow::closesDuring(int call) const {
  state().manners.callsUntilClosed = call;
  return *this;
}

SimulatedWindow SimulatedWindow::isCapturedAs(std::optional<std::string> captureTitle) const {
  state().captureTitle = std::move(captureTitle);
  return *this;
}

SimulatedWindow SimulatedWindow::withoutMinimizeButton() const {
  state().hasMinimizeButton = false;
  return *this;
}

SimulatedWindow SimulatedWindow::behaves() const {
  state().manners = {};
  return *this;
}

}  // namespace pellow::simulated
