#pragma once

#include "platform/screens.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

// The displays of the desktop, which tests plug and unplug.
class Screens final : public pellow::Screens {
 public:
  explicit Screens(System& system) : system_(system) {}

  std::vector<Screen> all() const override { return system_.state.screens; }

  std::optional<Screen> main() const override {
    const auto* screen = system_.state.mainScreen();
    return screen ? std::optional(*screen) : std::nullopt;
  }

  bool areLocked() const override { return system_.state.areScreensLocked; }

  Subscription onDidChangeParameters(std::function<void()> observer) override {
    return system_.screensChanged.add(std::move(observer));
  }

  // A further display with a menu bar and no Dock.
  void plug(DisplayID display, AppKitRect frame);
  void unplug(DisplayID display);
  // The user locks them, or unlocks them again.
  void lock(bool locks = true) { system_.state.areScreensLocked = locks; }
  // On the primary display; at first it is at the bottom.
  void moveDock(DockSide side);

 private:
  System& system_;
};

}  // namespace pellow::simulated
