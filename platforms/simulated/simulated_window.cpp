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
bool SimulatedWindow::hasFocus() const { return system_->state.focusedWindow() == id_; }
bool SimulatedWindow::isInFront() const {
  const auto& desktop = system_->state;
  for (const auto& window : desktop.windows)
    if (desktop.isVisible(window)) return window.id == id_;
  return false;
}
QuartzRect SimulatedWindow::frame() const { return state().frame; }
std::string SimulatedWindow::title() const { return state().title; }
ProcessID SimulatedWindow::pid() const { return state().pid; }

void SimulatedWindow::moveTo(QuartzPoint origin) const { state().frame.origin = origin; }
void SimulatedWindow::resize(Size size) const { state().frame.size = size; }
void SimulatedWindow::rename(std::string title) const { state().title = std::move(title); }
void SimulatedWindow::minimize() const { system_->state.minimize(state().id); }
void SimulatedWindow::unminimize() const { system_->state.unminimize(state().id); }
void SimulatedWindow::raise() const { system_->state.raise(state().id); }
void SimulatedWindow::close() const { system_->closeWindow(state().id); }

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

SimulatedWindow SimulatedWindow::behaves() const {
  state().manners = {};
  return *this;
}

}  // namespace pellow::simulated
