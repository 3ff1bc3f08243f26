#include "platforms/linux/x11/application_hiding.h"

#include <unistd.h>

#include <algorithm>

#include "platforms/linux/x11/application_windows.h"
#include "platforms/linux/x11/client_processes.h"

namespace pellow {

namespace {

constexpr Seconds hidePatience = 1;

}  // namespace

bool isApplicationHidden(X11Server& server, ProcessID pid, Deadline deadline) {
  const auto own = lookAtWindowsOf(server, pid, Facet::state | Facet::kind, deadline);
  const bool isMarked = std::ranges::any_of(own, [&](const WindowFacts& window) {
    return window.state.belongsToHiddenApplication && isIconified(server, window.state, deadline);
  });
  if (isMarked || !server.isHidden(pid)) return isMarked;
  const auto desktop = currentDesktop(server, deadline);
  return std::ranges::none_of(own, [&](const WindowFacts& window) {
    return isOut(server, window, deadline) && window.state.isOn(desktop);
  });
}

ApplicationHiding::ApplicationHiding(X11Server& server, Iconifier& iconifier,
                                     WindowEvents& windowEvents)
    : server_(server), iconifier_(iconifier), windowEvents_(windowEvents) {
  const Deadline deadline = server_.patience();
  const auto windows = clientList(server_, server_.atoms().netClientList, deadline);
  for (const auto& window : lookAtAll(server_, windows, Facet::state, deadline))
    if (window.state.belongsToHiddenApplication) watch(window.window);
  // Somebody may have shown them since. That is checked with the first events, not before this
  // process is the one Pellow: another one may be hiding the windows right now.
  windowEvents_.noteAll();
}

bool ApplicationHiding::hide(ProcessID pid) {
  if (pid == getpid()) return false;
  auto own = lookAtWindowsOf(server_, pid, Facet::state | Facet::kind, server_.patience());
  std::erase_if(own,
                [](const WindowFacts& window) { return window.kind == WindowKind::furniture; });
  if (own.empty()) return false;

  const Deadline deadline = server_.patience(hidePatience);
  const auto desktop = currentDesktop(server_, deadline);
  std::vector<WindowKey> shown;
  giveIdentities(server_, own, deadline);
  for (const auto& window : own) {
    if (const auto known = hidden_.find(window.window); known != hidden_.end())
      known->second.isToShow = false;
    // Windows of other desktops are left alone.
    if (window.state.isOn(desktop) && !isIconified(server_, window.state, deadline))
      shown.push_back(window.key());
  }
  if (deadline.hasMetSilence()) return false;
  // Before they go, so that nobody ever takes one of these windows for minimized, and none comes
  // back unseen.
  for (const auto& window : shown) {
    mark(window.window, true);
    watch(window.window);
  }
  const bool isHidden = iconifier_.iconify(shown, deadline);
  if (deadline.hasMetSilence()) return false;
  server_.setHidden(pid, isHidden);
  if (!isHidden) takeBack(shown);
  return isHidden;
}

// A late window manager may still do what it was asked. Windows that have not followed keep their
// marks, and are shown again if they do; those it refuses to iconify never do.
void ApplicationHiding::takeBack(const std::vector<WindowKey>& windows) {
  std::vector<WindowKey> followed;
  const Deadline deadline = server_.patience();
  for (const auto& window : windows) {
    const auto facts = look(server_, window, Facet::state, deadline);
    if (facts && isIconified(server_, facts->state, deadline)) {
      hidden_.erase(window.window);
      followed.push_back(window);
    } else {
      hidden_[window.window].isToShow = true;
    }
  }
  showAgain(followed);
}

bool ApplicationHiding::unhide(ProcessID pid) {
  const Deadline deadline = server_.patience();
  std::vector<WindowKey> hidden;
  auto own = lookAtWindowsOf(server_, pid, Facet::state, deadline);
  giveIdentities(server_, own, deadline);
  if (deadline.hasMetSilence()) return false;
  for (const auto& window : own) {
    const auto known = hidden_.find(window.window);
    const bool mayFollowYet = known != hidden_.end() && known->second.isToShow &&
                              !isIconified(server_, window.state, deadline);
    if (window.state.belongsToHiddenApplication && !mayFollowYet) hidden.push_back(window.key());
  }
  for (const auto& window : hidden) hidden_.erase(window.window);
  showAgain(hidden);
  server_.setHidden(pid, false);
  return !hidden.empty() || isAlive(pid);
}

void ApplicationHiding::showAgain(const std::vector<WindowKey>& windows) {
  const Deadline deadline = server_.patience(hidePatience);
  iconifier_.deiconify(windows, deadline);
  if (deadline.hasMetSilence()) return;
  // The marks go last, for the reason they came first.
  for (const auto& window : windows) mark(window.window, false);
  server_.connection().flush();
}

void ApplicationHiding::mark(xcb_window_t window, bool isHidden) {
  auto& connection = server_.connection();
  const std::uint32_t mark = 1;
  if (isHidden)
    xcb_change_property(connection.raw(), XCB_PROP_MODE_REPLACE, window,
                        server_.atoms().pellowHidden, XCB_ATOM_CARDINAL, 32, 1, &mark);
  else
    xcb_delete_property(connection.raw(), window, server_.atoms().pellowHidden);
}

void ApplicationHiding::watch(xcb_window_t window) {
  hidden_[window] = {windowEvents_.observe(window, [this, window] { windowChanged(window); })};
}

void ApplicationHiding::windowChanged(xcb_window_t window) {
  const auto known = hidden_.find(window);
  if (known == hidden_.end()) return;
  const Deadline deadline = server_.patience();
  const auto facts =
      WindowLook(server_, server_.connection(), window, Facet::state).collect(deadline);
  if (!facts) {
    if (facts.error() == AXError::invalidUIElement) hidden_.erase(known);
    return;
  }
  if (facts->state.withdrawn) {
    hidden_.erase(known);
    mark(window, false);
    return server_.connection().flush();
  }
  // Everything is looked at again once a window manager that takes over has settled.
  if (!server_.isWindowManagerSettled(deadline)) return;
  const bool isAway = isIconified(server_, facts->state, deadline);
  if (isAway != known->second.isToShow || deadline.hasMetSilence()) return;
  const ProcessID owner = owningProcesses(server_, {window}, deadline).front();
  if (owner != 0) unhide(owner);
}

}  // namespace pellow
