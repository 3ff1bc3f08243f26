#include "platforms/simulated/window.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/accessibility.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

WindowState& Window::state() const {
  if (auto* window = system_->state.window(id_)) return *window;
  throw std::out_of_range(fmt::format("window {} is gone", id_));
}

AXElement Window::element() const { return windowElement(*system_, id_); }

bool Window::exists() const { return system_->state.window(id_) != nullptr; }
bool Window::isVisible() const { return exists() && system_->state.isVisible(state()); }
double Window::shareOnDisplays() const {
  return isVisible() ? system_->state.shareOnDisplays(frame()) : 0;
}
bool Window::isMinimized() const { return state().minimized; }
bool Window::hasFocus() const { return system_->state.focusedWindow() == id_; }
bool Window::isInFront() const {
  const auto& desktop = system_->state;
  for (const auto& window : desktop.windows)
    if (desktop.isVisible(window)) return window.id == id_;
  return false;
}
QuartzRect Window::frame() const { return state().frame; }
AppKitPoint Window::minimizeButton() const {
  const auto button =
      system_->state.flip().toAppKit(frameOf(WindowPart::minimizeButton, state().frame));
  return {button.midX(), button.midY()};
}
std::string Window::title() const { return state().title; }
ProcessID Window::pid() const { return state().pid; }

void Window::moveTo(QuartzPoint origin) const { state().frame.origin = origin; }
void Window::resize(Size size) const { state().frame.size = size; }
void Window::rename(std::string title) const { state().title = std::move(title); }
void Window::does(void (DesktopState::*verb)(WindowID)) const {
  const auto id = state().id;
  system_->change([&](DesktopState& desktop) { (desktop.*verb)(id); });
}

void Window::minimize() const { does(&DesktopState::minimize); }
void Window::unminimize() const { does(&DesktopState::unminimize); }
void Window::raise() const { does(&DesktopState::raise); }
void Window::chooseFromWindowMenu() const { does(&DesktopState::choose); }
void Window::close() const { does(&DesktopState::close); }
void Window::orderOut() const {
  system_->announce({.kind = Announcement::Kind::elementDestroyed, .pid = pid(), .window = id_});
}

Window Window::answersAfter(Seconds delay) const {
  state().manners.answersAfter = delay;
  return *this;
}

Window Window::actsLate() const {
  state().manners.actsLate = true;
  return *this;
}

Window Window::refusesToMove(bool refuses) const {
  state().manners.refusesToMove = refuses;
  return *this;
}

Window Window::clampsToDisplay() const {
  state().manners.clampsToDisplay = true;
  return *this;
}

Window Window::isPaintedAt(QuartzPoint origin) const {
  state().paintedAt = origin;
  return *this;
}

Window Window::snapsToGrid(double step) const {
  state().manners.gridStep = step;
  return *this;
}

Window Window::movesTo(std::function<QuartzPoint(QuartzPoint)> moves) const {
  state().manners.moves = std::move(moves);
  return *this;
}

Window Window::fails(std::string name, AXError error, std::optional<AXCall> call) const {
  state().manners.faults.push_back({std::move(name), call, error, false});
  return *this;
}

Window Window::failsNext(std::string name, AXError error, std::optional<AXCall> call) const {
  state().manners.faults.push_back({std::move(name), call, error, true});
  return *this;
}

Window Window::closesDuring(int call) const {
  state().manners.callsUntilClosed = call;
  return *this;
}

Window Window::withoutMinimizeButton() const {
  state().hasMinimizeButton = false;
  return *this;
}

Window Window::behaves() const {
  state().manners = {};
  return *this;
}

}  // namespace pellow::simulated
