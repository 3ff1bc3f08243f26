#include "platforms/simulated/event_monitors.h"

#include <algorithm>
#include <utility>
#include <vector>

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
  const auto added = std::make_shared<LocalHandler>(std::move(handler));
  local_->push_front(added);
  return Subscription([weak = std::weak_ptr(local_), added] {
    if (const auto handlers = weak.lock()) std::erase(*handlers, added);
  });
}

std::optional<Subscription> EventMonitors::addGlobalPointerMoved(std::function<void()> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return globalPointer_.add(std::move(handler));
}

std::optional<Subscription> EventMonitors::addLocalPointerMoved(std::function<void()> handler) {
  if (!system_.state.allowsMonitors) return std::nullopt;
  return localPointer_.add(std::move(handler));
}

void EventMonitors::allow(bool allowed) { system_.state.allowsMonitors = allowed; }

void EventMonitors::pointerMoved(bool isLocal) const {
  (isLocal ? localPointer_ : globalPointer_).notify();
}

AppKitPoint EventMonitors::pointerLocation() const { return system_.state.pointer; }

void EventMonitors::keyPressed(const KeyEvent& event, bool isLocal) const {
  if (!isLocal) return global_.notify(event);
  const auto handlers = *local_;
  for (const auto& handler : handlers) {
    // One that has left meanwhile hears no more.
    if (std::ranges::find(*local_, handler) == local_->end()) continue;
    if (!(*handler)(event)) return;
  }
}

}  // namespace pellow::simulated
