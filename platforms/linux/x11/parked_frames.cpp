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
  const Turn turn(turns_);  // comes after what another thread does to the window
  const std::lock_guard lock(mutex_);
  const auto known = parked_.extract(window.window);
  if (parked) {
    parked->id = window.id;
    parked_[window.window] = *parked;
  }
  return known && known.mapped().id == window.id ? std::optional(known.mapped()) : std::nullopt;
}

ParkedFrames::Turn ParkedFrames::turn(Deadline deadline) {
  if (!deadline.hold) return Turn(turns_);
  Turn turn(turns_, std::chrono::duration<double>(ServerHold::patience));
  if (!turn) deadline.hold->noteUnanswered();
  return turn;
}

std::optional<ParkedFrames::Parked> ParkedFrames::parked(const WindowKey& window) const {
  const std::lock_guard lock(mutex_);
  const auto found = parked_.find(window.window);
  if (found == parked_.end() || found->second.id != window.id) return std::nullopt;
  return found->second;
}

void ParkedFrames::set(const WindowKey& window, const std::optional<Parked>& parked) {
  const std::lock_guard lock(mutex_);
  if (parked)
    parked_[window.window] = *parked;
  else
    parked_.erase(window.window);
}

void ParkedFrames::parkAgain(const WindowKey& window, Deadline deadline) {
  const auto own = turn(deadline);
  auto parked = own ? this->parked(window) : std::nullopt;
  if (!parked) return;
  const auto facts = look(server_, window, placeFacets, deadline);
  if (!facts) {
    if (facts.error() == AXError::invalidUIElement) set(window, std::nullopt);
    return;
  }
  const auto place = parked->place;
  if (facts->frame.origin() == place || server_.layout().showsMostOf(facts->frame.at(place)))
    return;
  if (!std::exchange(parked->isAskedAgain, true)) mover_.ask(*facts, place);
  set(window, parked);
  (void)mover_.push(*facts, place, deadline);
  server_.connection().flush();
}

void ParkedFrames::noteMoved(const WindowKey& window, Deadline deadline) {
  const auto own = turn(deadline);
  auto parked = own ? this->parked(window) : std::nullopt;
  if (!parked) return;
  const auto facts = look(server_, window, placeFacets, deadline);
  if (!facts) return;
  if (!hasPassed(parked->lateUntil) && facts->frame.origin() != parked->place) {
    parked->lateUntil = std::min(parked->lateUntil, deadlineIn(arrangePatience));
    set(window, parked);
    (void)mover_.push(*facts, parked->place, deadline);
    return server_.connection().flush();
  }
  const bool isBack = server_.layout().showsMostOf(facts->frame);
  if (!isBack || !server_.isWindowManagerSettled(deadline)) return;
  set(window, std::nullopt);
  if (LeftState::remembered(facts->state.leftState).states != LeftState::putAway) return;
  states_.remember(*facts, {});
  server_.connection().flush();
}

}  // namespace pellow
