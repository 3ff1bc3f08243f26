#pragma once

#include <map>

#include "platform/ax_element.h"
#include "platform/clock.h"

namespace pellow {

// Whatever the program does to a window comes back as an event from that window's application. This
// tells which events to ignore while such an echo may still come. Main thread.
class EchoGuard {
 public:
  explicit EchoGuard(const Clock& clock) : clock_(clock) {}

  // How long an action of the program may echo.
  static constexpr Seconds ownEcho = 0.5;

  // Activations and changes of focus of all applications, for `duration` from now; a later call
  // replaces it.
  void suppressActivation(Seconds duration);
  // The same, but never shortens it.
  void suppressActivationAtLeast(Seconds duration);
  bool isActivationSuppressed() const;

  // Minimizing in all applications, for `duration` from now; a later call replaces it.
  void suppressMinimize(Seconds duration);
  bool isMinimizeSuppressed() const;

  // How long an application takes to calm down after one of its windows was put away.
  static constexpr Seconds settleTime = 2;

  // Activations and changes of focus of one application.
  void settle(ProcessID pid, Seconds duration);
  bool isSettling(ProcessID pid) const;

 private:
  static constexpr Seconds distantPast = -1e9;

  const Clock& clock_;
  Seconds suppressActivationUntil_ = distantPast;
  Seconds suppressMinimizeUntil_ = distantPast;
  std::map<ProcessID, Seconds> settlingUntil_;
};

}  // namespace pellow
