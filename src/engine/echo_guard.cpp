#include "engine/echo_guard.h"

#include <algorithm>

namespace pellow {

void EchoGuard::suppressActivation(Seconds duration) {
  suppressActivationUntil_ = clock_.now() + duration;
}

void EchoGuard::suppressActivationAtLeast(Seconds duration) {
  suppressActivationUntil_ = std::max(suppressActivationUntil_, clock_.now() + duration);
}

bool EchoGuard::isActivationSuppressed() const { return clock_.now() < suppressActivationUntil_; }

void EchoGuard::suppressMinimize(Seconds duration) {
  suppressMinimizeUntil_ = clock_.now() + duration;
}

bool EchoGuard::isMinimizeSuppressed() const { return clock_.now() < suppressMinimizeUntil_; }

void EchoGuard::settle(ProcessID pid, Seconds duration) {
  const auto now = clock_.now();
  settlingUntil_[pid] = now + duration;
  std::erase_if(settlingUntil_, [now](const auto& entry) { return entry.second <= now; });
}

bool EchoGuard::isSettling(ProcessID pid) const {
  const auto entry = settlingUntil_.find(pid);
  return entry != settlingUntil_.end() && entry->second > clock_.now();
}

}  // namespace pellow
