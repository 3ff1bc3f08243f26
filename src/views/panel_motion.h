#pragma once

#include <functional>

#include "base/geometry.h"
#include "platform/queues.h"

namespace pellow {

// Where a panel is, and how much of it is seen.
struct PanelLook {
  AppKitRect frame;
  double opacity = 1;  // 0 to 1

  bool operator==(const PanelLook&) const = default;
};

// The looks of a panel that moves, resizes and fades as `Panel` promises. The platform owns the
// timer, and shows what the members answer. Main thread.
class PanelMotion {
 public:
  explicit PanelMotion(MainQueue& queue) : queue_(queue) {}

  // There at once. What was under way is cut short.
  const PanelLook& jump(const AppKitRect& frame);

  // Sets out from what is shown. What was under way is cut short.
  void start(const AppKitRect& frame, double opacity, std::function<void()> onDone);
  // `progress` from 0 to 1, as the timing has it.
  const PanelLook& advance(double progress) { return shown_ = at(progress); }
  const PanelLook& arrive();

  PanelLook at(double progress) const;
  const PanelLook& target() const { return target_; }
  const PanelLook& shown() const { return shown_; }

 private:
  void cutShort();

  MainQueue& queue_;
  PanelLook start_;
  PanelLook shown_;
  PanelLook target_;
  std::function<void()> onDone_;  // of the motion under way
  Subscription done_;             // of the one that has arrived
};

}  // namespace pellow
