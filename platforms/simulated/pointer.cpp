#include "platforms/simulated/pointer.h"

#include <utility>

#include "platforms/simulated/event_monitors.h"
#include "platforms/simulated/open_menu.h"
#include "platforms/simulated/panels.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

void Pointer::move(AppKitPoint to) {
  system_.mainLoop.post([this, to] {
    system_.state.pointer = to;
    monitors_.pointerMoved(holder_ == Holder::program ||
                           (holder_ == Holder::nobody && isOverProgram()));
    if (holder_ != Holder::others) panels_.pointerMoved();
  });
}

void Pointer::press(AppKitPoint at) {
  move(at);
  pressHere();
}

void Pointer::pressHere() {
  system_.mainLoop.post([this] { pressed(); });
}

void Pointer::release() {
  system_.mainLoop.post([this] { released(); });
}

void Pointer::click(AppKitPoint at) {
  press(at);
  release();
}

void Pointer::drag(AppKitPoint from, AppKitPoint to, int steps) {
  press(from);
  const auto way = to - from;
  for (int step = 1; step <= steps; ++step)
    move(from + AppKitVector{way.dx * step / steps, way.dy * step / steps});
  release();
}

void Pointer::secondaryClick(AppKitPoint at) {
  move(at);
  system_.mainLoop.post([this] {
    if (holder_ != Holder::nobody) return;
    menu_.close();
    const auto point = system_.state.pointer;
    if (auto* const panel = panels_.panelAt(point)) return panel->openContextMenu(menu_, point);
    if (!isOverProgram()) monitors_.mouseDownElsewhere();
  });
}

void Pointer::pressed() {
  if (holder_ != Holder::nobody) return;
  if (menu_.isOpen()) return menu_.close();
  if (panels_.press()) {
    holder_ = Holder::program;
    return;
  }
  holder_ = Holder::others;
  if (!isOverProgram()) monitors_.mouseDownElsewhere();
  pressedButton_ = minimizeButtonBelow();
  if (!pressedButton_) pressedOnWindow();
}

void Pointer::released() {
  const auto button = std::exchange(pressedButton_, std::nullopt);
  if (std::exchange(holder_, Holder::nobody) == Holder::program) return panels_.release();
  panels_.pointerMoved();
  if (!button || minimizeButtonBelow() != button) return;
  system_.change([&](DesktopState& desktop) { desktop.minimize(*button); });
}

bool Pointer::isOverProgram() const {
  const auto& state = system_.state;
  if (panels_.panelAt(state.pointer)) return true;
  const auto window = state.windowAt(state.toQuartz(state.pointer));
  return window && state.window(*window)->pid == system_.ownPid();
}

void Pointer::pressedOnWindow() {
  const auto& state = system_.state;
  const auto window = state.windowAt(state.toQuartz(state.pointer));
  if (!window) return;
  system_.change([&](DesktopState& desktop) {
    desktop.raise(*window);
    desktop.activate(desktop.window(*window)->pid);
  });
}

std::optional<WindowID> Pointer::minimizeButtonBelow() const {
  const auto& state = system_.state;
  const auto point = state.toQuartz(state.pointer);
  const auto window = state.windowAt(point);
  const bool isButton =
      window && state.partAt(*state.window(*window), point) == WindowPart::minimizeButton;
  return isButton ? window : std::nullopt;
}

}  // namespace pellow::simulated
