#include "platforms/simulated/event_monitors.h"

#include <utility>

#include "platforms/simulated/system.h"

namespace pellow::simulated {

std::optional<Subscription> EventMonitors::addGlobalKeyDown(
    std::function<void(const KeyEvent&)> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return global_.add(std::move(handler));
}

std::optional<Subscription> EventMonitors::addLocalKeyDown(
    std::function<bool(const KeyEvent&)> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return local_.add(std::move(handler));
}

std::optional<Subscription> EventMonitors::addGlobalPointerMoved(std::function<void()> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return globalPointer_.add(std::move(handler));
}

std::optional<Subscription> EventMonitors::addLocalPointerMoved(std::function<void()> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return localPointer_.add(std::move(handler));
}

std::optional<Subscription> EventMonitors::addGlobalMouseDown(std::function<void()> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return globalMouseDown_.add(std::move(handler));
}

void EventMonitors::allow(bool allowed) { system_.state.allowsMonitors = allowed; }

void EventMonitors::pointerMoved(bool isLocal) const {
  (isLocal ? localPointer_ : globalPointer_).notify();
}

AppKitPoint EventMonitors::pointerLocation() const { return system_.state.pointer; }

void EventMonitors::keyPressed(const KeyEvent& event, bool isLocal) const {
  if (!isLocal) return global_.notify(event);
  local_.newestFirst(event);
}

}  // namespace pellow::simulated
