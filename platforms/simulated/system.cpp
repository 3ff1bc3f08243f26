#include "platforms/simulated/system.h"

#include <algorithm>

#include "platforms/simulated/accessibility.h"

namespace pellow::simulated {

System::System(DesktopState desktop, std::uint64_t seed)
    : state(std::move(desktop)), scheduler(seed, state.time), mainLoop(scheduler) {
  ownPid_ = state.launch({.bundleID = "com.velloway.pellow",
                          .localizedName = "Pellow",
                          .activationPolicy = ActivationPolicy::prohibited});
  for (const auto& late : state.lateWrites) scheduleLateWrite(late);
}

bool System::beginPortCall(std::string what) {
  if (!processRuns_) return false;
  ++portCalls;
  if (recordsHistory)
    history.push_back(
        fmt::format("{:.6f} {}: {}", scheduler.now(), scheduler.runningThread(), what));
  if (onPortCall) onPortCall(portCalls);
  scheduler.mayWait();
  return processRuns_;
}

DesktopState System::snapshot() const {
  auto left = state;
  left.time = scheduler.now();
  left.defaults.loseUnsaved(left.time);
  left.endApplication(ownPid_);
  return left;
}

void System::exit(int status) {
  if (!processRuns_) return;
  exitStatus_ = status;
  state.defaults.saveAll();
  endProcess();
}

void System::kill() {
  if (!processRuns_) return;
  state.defaults.loseUnsaved(scheduler.now());
  endProcess();
}

void System::endProcess() {
  processRuns_ = false;
  mainLoop.stop();
  state.endApplication(ownPid_);
}

void System::writeLate(Seconds after, WindowID window, std::string_view attribute,
                       const AXValue& value) {
  state.lateWrites.push_back({scheduler.now() + after, window, std::string(attribute), value});
  scheduleLateWrite(state.lateWrites.back());
}

void System::scheduleLateWrite(const LateWrite& late) {
  if (late.moment == never) return;
  scheduler.happenAt(late.moment, [this] {
    change([now = scheduler.now()](DesktopState& desktop) { desktop.carryOutLateWrites(now); });
  });
}

void System::change(const std::function<void(DesktopState&)>& act) {
  const Glance before(state);
  act(state);
  for (const auto& news : Glance(state).announcementsSince(before)) announce(news);
}

void System::killApplication(ProcessID pid) {
  std::erase_if(elementObservers_, [&](const auto& entry) {
    return entry.first.pid == pid && entry.first.window != 0;
  });
  change([pid](DesktopState& desktop) { desktop.endApplication(pid); });
}

void System::giveWay() {
  const bool showsWindow = std::ranges::any_of(state.windows, [&](const WindowState& each) {
    return each.pid == ownPid_ && !each.minimized;
  });
  if (alerts > 0 || showsWindow) return;
  change([this](DesktopState& desktop) { desktop.resign(ownPid_); });
}

void System::announce(const Announcement& news) {
  using enum Announcement::Kind;
  switch (news.kind) {
    case didBecomeRegular:
      return announceOf(applicationBecameRegular, news.pid);
    case didActivate:
      return announceOf(applicationActivated, news.pid);
    case didTerminate:
      return announceOf(applicationTerminated, news.pid);
    case windowMiniaturized:
      return announceElement({news.pid, 0, std::string(AX::notification::windowMiniaturized)},
                             news.window);
    case focusedWindowChanged:
      return announceElement({news.pid, 0, std::string(AX::notification::focusedWindowChanged)},
                             news.window);
    case elementDestroyed:
      if (news.pid == ownPid_)
        mainLoop.post([this, window = news.window] { windowGone.notify(window); });
      return announceElement(
          {news.pid, news.window, std::string(AX::notification::elementDestroyed)}, news.window);
  }
}

void System::announceOf(const HandlerList<void(ProcessID)>& observers, ProcessID pid) {
  send(0, [&observers, pid] { observers.notify(pid); });
}

void System::announceElement(const ElementNotification& notification, WindowID window) {
  if (!state.trustsProcess || !elementObservers_.contains(notification)) return;
  send(notification.pid, [this, notification, window] {
    const auto found = elementObservers_.find(notification);
    if (found == elementObservers_.end()) return;
    const auto observers = found->second;
    if (notification.window != 0) elementObservers_.erase(found);
    observers.notify(windowElement(*this, window));
  });
}

void System::send(ProcessID sender, Work delivery) {
  auto arrival = scheduler.now();
  if (state.longestAnnouncement > 0)
    arrival += state.longestAnnouncement * scheduler.randomFraction();
  auto& last = lastArrival_[sender];
  last = std::max(last, arrival);
  mainLoop.post(std::move(delivery), last);
}

Subscription System::observeElement(ProcessID pid, WindowID window, std::string_view notification,
                                    std::function<void(const AXElement&)> handler) {
  return elementObservers_[{pid, window, std::string(notification)}].add(std::move(handler));
}

void System::showSpace(int space) {
  state.shownSpace = space;
  mainLoop.post([this] { activeSpaceChanged.notify(); });
}

void System::changeScreens(const std::function<void(DesktopState&)>& act) {
  act(state);
  mainLoop.post([this] { screensChanged.notify(); });
}

}  // namespace pellow::simulated
