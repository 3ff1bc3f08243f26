#include "platforms/simulated/simulated_event_monitors.h"

#include <utility>

#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

std::optional<Subscription> SimulatedEventMonitors::addGlobalKeyDown(
    std::function<void(const KeyEvent&)> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return global_.add(std::move(handler));
}

std::optional<Subscription> SimulatedEventMonitors::addLocalKeyDown(
    std::function<bool(const KeyEvent&)> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return local_.add(std::move(handler));
}

std::optional<Subscription> SimulatedEventMonitors::addGlobalPointerMoved(
    std::function<void()> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return globalPointer_.add(std::move(handler));
}

std::optional<Subscription> SimulatedEventMonitors::addLocalPointerMoved(
    std::function<void()> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return localPointer_.add(std::move(handler));
}

void SimulatedEventMonitors::pointerMoved(bool isOverProgram) const {
  (isOverProgram ? localPointer_ : globalPointer_).notify();
}

AppKitPoint SimulatedEventMonitors::pointerLocation() const { return system_.state.pointer; }

void SimulatedEventMonitors::press(std::uint16_t keyCode, std::uint64_t modifierFlags,
                                   std::string characters) {
  system_.mainLoop.post([this, keyCode, modifierFlags, text = std::move(characters)] {
    deliver({keyCode, modifierFlags, text});
  });
}

bool SimulatedEventMonitors::programHasKeyboard() const {
  return programHasKeyboard_ || system_.state.frontmost == system_.ownPid();
}

void SimulatedEventMonitors::deliver(const KeyEvent& event) const {
  if (!programHasKeyboard()) return global_.notify(event);
  local_.newestFirst(event);
}

}  // namespace pellow::simulated
