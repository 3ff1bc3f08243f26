#include "platforms/linux/x11/parked_frames.h"

#include <algorithm>
#include <utility>

namespace pellow {

std::vector<ParkedFrames::Entry> ParkedFrames::all() const {
  const std::lock_guard lock(mutex_);
  std::vector<Entry> entries;
  for (const auto& [window, parked] : parked_)
    entries.push_back({{window, parked.id}, !hasPassed(parked.lateUntil)});
  return entries;
}

std::optional<ParkedFrames::Parked> ParkedFrames::exchange(const WindowKey& window,
                                                           std::optional<Parked> parked) {
  const std::lock_guard lock(mutex_);
  const auto known = parked_.extract(window.window);
  if (parked) {
    parked->id = window.id;
    parked_[window.window] = *parked;
  }
  return known && known.mapped().id == window.id ? std::optional(known.mapped()) : std::nullopt;
}

void ParkedFrames::parkAgain(const WindowKey& window, Deadline deadline) {
  // Held to the end, so that a move back on another thread comes after this one.
  const std::lock_guard lock(mutex_);
  const auto parked = parked_.find(window.window);
  if (parked == parked_.end() || parked->second.id != window.id) return;
  const auto facts = look(server_, window, placeFacets, deadline);
  if (!facts) {
    if (facts.error() == AXError::invalidUIElement) parked_.erase(parked);
    return;
  }
  const auto place = parked->second.place;
  if (facts->frame.origin() == place || server_.layout().showsMostOf(facts->frame.at(place)))
    return;
  if (!std::exchange(parked->second.isAskedAgain, true)) mover_.ask(*facts, place);
  (void)mover_.push(*facts, place, deadline);
  server_.connection().flush();
}

void ParkedFrames::noteMoved(const WindowKey& window, Deadline deadline) {
  const std::lock_guard lock(mutex_);
  const auto parked = parked_.find(window.window);
  if (parked == parked_.end() || parked->second.id != window.id) return;
  const auto facts = look(server_, window, placeFacets, deadline);
  if (!facts) return;
  const auto place = parked->second.place;
  auto& lateUntil = parked->second.lateUntil;
  if (!hasPassed(lateUntil) && facts->frame.origin() != place) {
    lateUntil = std::min(lateUntil, deadlineIn(arrangePatience));
    (void)mover_.push(*facts, place, deadline);
    return server_.connection().flush();
  }
  const bool isBack = server_.layout().showsMostOf(facts->frame);
  if (!isBack || !server_.isWindowManagerSettled(deadline)) return;
  parked_.erase(parked);
  if (LeftState::remembered(facts->state.leftState).states != LeftState::putAway) return;
  states_.remember(*facts, {});
  server_.connection().flush();
}

}  // namespace pellow
