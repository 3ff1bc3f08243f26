#include "platforms/macos/windows/mac_alerts.h"

#include <optional>
#include <utility>

#include "platforms/macos/foundation/foreground.h"
#include "platforms/macos/foundation/main_queue.h"
#include "platforms/macos/windows/alert_window.h"

namespace pellow {

// What all alerts share. Work on the main queue may come after the alerts have gone.
struct MacAlerts::Stage {
  const std::shared_ptr<Foreground> foreground;
  int onScreen = 0;
  // Whether the keyboard was in a window of ours before the first of the alerts that are under way.
  std::optional<bool> wasOurs;

  explicit Stage(std::shared_ptr<Foreground> shared) : foreground(std::move(shared)) {}

  void present(NSWindow* window) {
    ++onScreen;
    if (!wasOurs) wasOurs = NSApp.keyWindow != nil;
    foreground->take(window);
  }

  // A window of ours that merely stood behind the alert gets the keyboard from AppKit: that alone
  // is no reason to stay. One that was asked for since is.
  void giveBack() {
    if (onScreen > 0 || !wasOurs) return;
    NSWindow* const key = NSApp.keyWindow;
    const bool staysOurs = key && (*wasOurs || key == foreground->latest());
    wasOurs.reset();
    if (!staysOurs) foreground->giveBack();
  }
};

// Lives until the alert is answered and its owner told, or taken away.
struct MacAlerts::Showing {
  std::shared_ptr<Stage> stage;
  PellowAlertWindow* window;
  std::function<void(std::size_t)> onChosen;
  bool isOnScreen = true;

  ~Showing() {
    if (!isOnScreen) return;
    leave();
    hopToMain([shared = stage] { shared->giveBack(); });
  }

  void leave() {
    isOnScreen = false;
    --stage->onScreen;
    window->onAnswer = nullptr;
    [window orderOut:nil];
    keepUntilIdle(window);
  }
};

MacAlerts::MacAlerts(std::shared_ptr<Foreground> foreground)
    : stage_(std::make_shared<Stage>(std::move(foreground))) {}

Subscription MacAlerts::show(Alert alert, std::function<void(std::size_t)> onChosen) {
  auto* const window = [[PellowAlertWindow alloc] initWithAlert:alert];
  const auto showing = std::make_shared<Showing>(stage_, window, std::move(onChosen));
  window->onAnswer = [weak = std::weak_ptr(showing)](std::size_t button) {
    const auto answered = weak.lock();
    if (!answered) return;
    answered->leave();
    hopToMain([weak, shared = answered->stage, button] {
      // The owner drops its subscription, and may show the next alert.
      if (const auto still = weak.lock()) std::exchange(still->onChosen, nullptr)(button);
      shared->giveBack();
    });
  };
  stage_->present(window);
  return Subscription([held = showing]() mutable { held.reset(); });
}

}  // namespace pellow
