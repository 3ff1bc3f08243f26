#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "base/handler_list.h"
#include "base/subscription.h"
#include "platforms/simulated/announcements.h"
#include "platforms/simulated/desktop_state.h"
#include "platforms/simulated/main_loop.h"
#include "platforms/simulated/scheduler.h"

namespace pellow::simulated {

// What the ports of one process share: the desktop, the time, the main loop, and the process's own
// life. A port call that could wait, or changes something outside the process, begins with
// `portCall`.
class System {
 public:
  // Starts the process on this desktop.
  System(DesktopState desktop, std::uint64_t seed);
  System(const System&) = delete;
  System& operator=(const System&) = delete;

  DesktopState state;
  Scheduler scheduler;
  MainLoop mainLoop;
  HandlerList<void(ProcessID)> applicationActivated;
  HandlerList<void(ProcessID)> applicationBecameRegular;
  HandlerList<void(ProcessID)> applicationTerminated;
  HandlerList<void(WindowID)> windowGone;
  HandlerList<void()> screensChanged;
  HandlerList<void()> activeSpaceChanged;

  // Counts the call and lets others run. False once the process has ended: then the call must
  // change nothing.
  template <class... Args>
  bool portCall(fmt::format_string<Args...> what, Args&&... args) {
    if (!recordsHistory) return beginPortCall({});
    return beginPortCall(fmt::format(what, std::forward<Args>(args)...));
  }
  // The same, but describes the call only if somebody reads it.
  template <std::invocable Describe>
  bool portCall(const Describe& describe) {
    return beginPortCall(recordsHistory ? describe() : std::string());
  }

  std::uint64_t portCalls = 0;  // so far
  std::function<void(std::uint64_t call)> onPortCall;
  bool recordsHistory = false;
  std::vector<std::string> history;

  // The desktop as a crash at this moment would leave it.
  DesktopState snapshot() const;

  ProcessID ownPid() const { return ownPid_; }
  bool processRuns() const { return processRuns_; }
  std::optional<int> exitStatus() const { return exitStatus_; }
  // The process ends normally, with everything saved.
  void exit(int status);
  // The process is cut off.
  void kill();

  // The application acts although its caller no longer waits and may be dead.
  void writeLate(Seconds after, WindowID window, std::string_view attribute, const AXValue& value);

  // One thing that somebody does to applications and windows, announced on the main queue.
  void change(const std::function<void(DesktopState&)>& act);
  // Its windows cannot say that they go.
  void killApplication(ProcessID pid);
  // A window or an alert of this process has gone: after the last one it gives way to others.
  void giveWay();
  int alerts = 0;  // of this process, that show
  void showSpace(int space);
  void changeScreens(const std::function<void(DesktopState&)>& act);

  // The handler hears the element that posts the notification: of a window, or of any window of an
  // application (`window` is 0).
  Subscription observeElement(ProcessID pid, WindowID window, std::string_view notification,
                              std::function<void(const AXElement&)> handler);
  // Also what no change of the desktop has brought about.
  void announce(const Announcement& news);

 private:
  using ElementObservers = HandlerList<void(const AXElement&)>;
  struct ElementNotification {
    ProcessID pid;
    WindowID window;  // 0: of the application
    std::string name;

    auto operator<=>(const ElementNotification&) const = default;
  };

  bool beginPortCall(std::string what);
  void endProcess();
  void scheduleLateWrite(const LateWrite& late);
  void announceOf(const HandlerList<void(ProcessID)>& observers, ProcessID pid);
  void announceElement(const ElementNotification& notification, WindowID window);
  // Takes as long as the seed says, and arrives after all that its sender sent before.
  void send(ProcessID sender, Work delivery);

  std::map<ElementNotification, ElementObservers> elementObservers_;
  std::map<ProcessID, Seconds> lastArrival_;  // by sender
  ProcessID ownPid_ = 0;
  bool processRuns_ = true;
  std::optional<int> exitStatus_;
};

}  // namespace pellow::simulated
