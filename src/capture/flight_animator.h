#pragma once

#include <deque>
#include <functional>
#include <list>
#include <memory>

#include "base/geometry.h"
#include "base/subscription.h"
#include "model/preferences.h"
#include "platform/image.h"
#include "platform/panels.h"
#include "platform/queues.h"

namespace pellow {

// Flies a picture from where a window was into its tab and back, in a panel that lives for one
// flight. The window itself does not move. All frames are in AppKit space. Main thread.
//
// Windows come before pictures: a lone flight begins at once. While others are on their way, it
// waits until no more have been asked for during a frame of the display; flights that would be too
// many at a time are left out.
class FlightAnimator {
 public:
  // What flies: the window's own picture, or else the application's icon.
  enum class Subject { picture, icon };

  // Every flight takes `preferences.animationDuration()`.
  FlightAnimator(Panels& panels, const Preferences& preferences, MainQueue& mainQueue)
      : panels_(panels), preferences_(preferences), mainQueue_(mainQueue) {}

  // From the window, shrinking and fading, into the tab. `completion` runs once; at once when there
  // is nothing to see.
  void flyOut(const Image& image, Subject subject, const AppKitRect& windowFrame,
              const AppKitRect& tabFrame, std::function<void()> completion = nullptr);

  // From the tab to where the window comes back.
  void flyBack(const Image& image, Subject subject, const AppKitRect& tabFrame,
               const AppKitRect& windowFrame);

  // Another window is about to go: those that wait to fly wait until it has gone. False when there
  // are too many already for one more to fly.
  bool makeWay();

  void fly(const Image& image, const AppKitRect& from, const AppKitRect& to, double fadeFrom,
           double fadeTo, std::function<void()> completion = nullptr);

  // Where a flight of `rect` ends in a tab: as large as fits, with its proportions, in the middle.
  static AppKitRect landing(const AppKitRect& rect, const AppKitRect& tabFrame);

 private:
  struct Flight {
    Image image;
    AppKitRect from;
    AppKitRect to;
    double fadeFrom = 1;
    double fadeTo = 1;
    std::function<void()> completion;
  };

  void begin(Flight flight);
  void beginNextSoon();

  Panels& panels_;
  const Preferences& preferences_;
  MainQueue& mainQueue_;
  std::list<std::unique_ptr<Panel>> flying_;
  std::deque<Flight> waiting_;
  Subscription lull_;
};

}  // namespace pellow
