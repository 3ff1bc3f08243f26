#pragma once

#include <functional>
#include <limits>
#include <optional>

#include "access/ax_queue.h"
#include "access/displays.h"
#include "access/target_window.h"
#include "base/geometry.h"
#include "base/log.h"
#include "base/subscription.h"
#include "base/task.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/event_monitors.h"
#include "platform/queues.h"

namespace pellow {

// Notices that the pointer rests on the minimize button of another application's window.
// Applications that are slow to answer are asked on a queue of their own, one question at a time:
// movements until the answer are passed over. Main thread.
class HoverTrigger {
 public:
  // All of it outlives the trigger.
  struct Surroundings {
    Accessibility& accessibility;
    const Clock& clock;
    const Displays& displays;
    const Log& log;
    EventMonitors& monitors;
    Queues& queues;
    ProcessID ownProcess;
  };

  explicit HoverTrigger(const Surroundings& surroundings);

  // The pointer has rested on a window's minimize button; the frame is the button's. Once until it
  // leaves.
  std::function<void(const TargetWindow& window, const AppKitRect& button)> onEnter;
  // It has left the button that was reported.
  std::function<void()> onExit;
  // A window below the pointer, now and then.
  std::function<void(const TargetWindow&)> onWindowUnderCursor;

  // While the pointer is inside, its movements count as none.
  std::optional<AppKitRect> protectedRect;

  void start();
  void stop();

  // The next time the pointer rests on a button, that is reported, even if it is the same one.
  void reset();

 private:
  // A minimize button, its window and where it is.
  struct Button {
    AXElement element;
    TargetWindow window;
    QuartzRect frame;
  };
  struct Probe {
    std::optional<Button> button;
    std::optional<TargetWindow> window;  // below the pointer, if that was asked for
  };

  void cursorMoved();
  Task<> probe(QuartzPoint at, bool sweepsForWindow);
  void handle(const std::optional<Button>& found);
  void scheduleDwell();
  Task<> confirm();

  // On the queue.
  Probe look(QuartzPoint at, bool sweepsForWindow) const;
  std::optional<TargetWindow> windowOf(const AXElement& element) const;

  Surroundings around_;
  Seconds lastProbe_ = -std::numeric_limits<Seconds>::infinity();
  Seconds lastWindowSweep_ = -std::numeric_limits<Seconds>::infinity();
  AppKitPoint lastPoint_{std::numeric_limits<double>::infinity(),
                         std::numeric_limits<double>::infinity()};
  bool probeInFlight_ = false;
  std::optional<AXElement> candidateButton_;
  std::optional<AXElement> reportedButton_;
  Subscription dwellWork_;
  std::optional<Subscription> globalMonitor_;
  std::optional<Subscription> localMonitor_;
  AXQueue queue_;
  TaskScope tasks_;  // ends first: its tasks use everything above
};

}  // namespace pellow
