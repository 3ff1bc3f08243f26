#pragma once

#include <functional>
#include <list>
#include <memory>

#include "base/geometry.h"
#include "model/preferences.h"
#include "platform/image.h"
#include "platform/panels.h"

namespace pellow {

// Lets a picture fly from where a window was into its tab and back, in a panel that lives only for
// its flight. Nothing of the window itself moves. All frames are in AppKit space. Main thread.
class FlightAnimator {
 public:
  // What flies: the window's own picture, or the application's icon in its stead.
  enum class Subject { picture, icon };

  // Every flight takes `preferences.animationDuration()`.
  FlightAnimator(Panels& panels, const Preferences& preferences)
      : panels_(panels), preferences_(preferences) {}

  // From the window, shrinking and fading, into the tab. `completion` runs once; at once when there
  // is nothing to see.
  void flyOut(const Image& image, Subject subject, const AppKitRect& windowFrame,
              const AppKitRect& tabFrame, std::function<void()> completion = nullptr);

  // From the tab to where the window comes back.
  void flyBack(const Image& image, Subject subject, const AppKitRect& tabFrame,
               const AppKitRect& windowFrame);

  void fly(const Image& image, const AppKitRect& from, const AppKitRect& to, double fadeFrom,
           double fadeTo, std::function<void()> completion = nullptr);

  // Where a flight of `rect` ends in a tab: as large as fits, with its proportions, in the middle.
  static AppKitRect landing(const AppKitRect& rect, const AppKitRect& tabFrame);

 private:
  Panels& panels_;
  const Preferences& preferences_;
  std::list<std::unique_ptr<Panel>> flying_;
};

}  // namespace pellow
