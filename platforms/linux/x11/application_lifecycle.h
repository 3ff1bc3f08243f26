#pragma once

#include <functional>
#include <map>
#include <set>
#include <vector>

#include "base/handler_list.h"
#include "platforms/linux/x11/x11_server.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {

// Hears which applications come and which end. One that has closed its last window has ended only
// when its process has. It counts as launched with its first window for the taskbar, so that a
// splash screen tells nobody a wrong policy. Main thread.
class ApplicationLifecycle {
 public:
  // `pollSet` is an epoll descriptor that the desktop waits on, for processes that are about to
  // end.
  ApplicationLifecycle(X11Server& server, int pollSet);

  Subscription onLaunch(std::function<void(ProcessID)> observer) {
    return launchObservers_.add(std::move(observer));
  }
  Subscription onEnd(std::function<void(ProcessID)> observer) {
    return endObservers_.add(std::move(observer));
  }

  // Whoever has been told of an application hears of its end, even if the events of its first and
  // last window are handled together.
  void promiseEnd(ProcessID pid) { withWindows_.insert(pid); }

  // The list of clients has changed.
  void windowsChanged();
  // A descriptor in the poll set is ready.
  void processEnded();

 private:
  using Owners = std::map<xcb_window_t, ProcessID>;

  Owners ownersOf(const std::vector<xcb_window_t>& windows, Deadline deadline) const;
  void keepClientsWithoutProcess(Owners& now, Deadline deadline) const;
  std::vector<ProcessID> launchesAmong(const Owners& now, Deadline deadline) const;
  void watchForEnd(ProcessID pid);
  void end(ProcessID pid);

  X11Server& server_;
  const int pollSet_;
  // Of the windows in the list, without this process; those of clients without a process as long as
  // they exist.
  Owners owners_;
  std::set<ProcessID> withWindows_;
  std::set<ProcessID> regular_;
  std::map<ProcessID, FileDescriptor> leaving_;  // without windows, still alive
  HandlerList<void(ProcessID)> launchObservers_;
  HandlerList<void(ProcessID)> endObservers_;
};

}  // namespace pellow
