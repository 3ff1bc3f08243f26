#pragma once

#include <map>

#include "base/handler_list.h"
#include "platform/screens.h"
#include "platforms/linux/x11/grabs.h"
#include "platforms/linux/x11/window_events.h"
#include "platforms/linux/x11/x11_server.h"

namespace pellow {

// The monitors of RandR, or the whole X screen where RandR is missing. Their numbers come from
// their names, so that a monitor keeps its own when it is unplugged and comes back. While the
// server does not answer, the last known ones stand.
class X11Screens : public Screens {
 public:
  // `events` is the connection whose events the desktop hands on.
  X11Screens(X11Server& server, X11Connection& events, WindowEvents& windowEvents,
             const Grabs& grabs, double scale);

  std::vector<Screen> all() const override;
  std::optional<Screen> main() const override;
  bool areLocked() const override;
  Subscription onDidChangeParameters(std::function<void()> observer) override;

  // Takes this many pixels for a point from now on, and tells the observers.
  void setScale(double scale);

  // Rereads what the layout depends on, and tells the observers if it has changed. Answers whether
  // it has.
  bool refresh();
  // Whether the server did not answer in time, and is to be asked again with the next event: it
  // sends something as soon as it answers again.
  bool isOutdated() const { return isOutdated_; }

 private:
  ScreenLayout read();
  std::vector<ScreenLayout::Monitor> readMonitors(Deadline deadline) const;
  ScreenLayout::Monitor wholeScreen(Deadline deadline) const;
  // Answers the windows that reserve a side of the X screen.
  std::vector<xcb_window_t> cutStruts(std::vector<ScreenLayout::Monitor>& monitors,
                                      Deadline deadline) const;
  void watchDocks(const std::vector<xcb_window_t>& docks);
  void cutWorkAreas(std::vector<ScreenLayout::Monitor>& monitors, Deadline deadline) const;
  bool hasMonitors(Deadline deadline) const;
  bool isSomethingLocking() const;

  X11Server& server_;
  X11Connection& events_;
  WindowEvents& windowEvents_;
  const Grabs& grabs_;
  double scale_;  // pixels per point
  bool isOutdated_ = false;
  mutable DisplayID lastMain_ = 0;
  mutable bool wereLocked_ = false;
  // Not every window manager says it when one of them changes its mind.
  std::map<xcb_window_t, Subscription> docks_;
  HandlerList<void()> observers_;
};

}  // namespace pellow
