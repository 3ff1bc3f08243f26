#include "platforms/linux/x11/application_events.h"

#include <utility>
#include <vector>

#include "platforms/linux/x11/client_processes.h"

namespace pellow {

ApplicationEvents::ApplicationEvents(X11Server& server, WindowEvents& windowEvents,
                                     ActiveWindow& activeWindow)
    : server_(server),
      windowEvents_(windowEvents),
      focusWatch_(activeWindow.onChange([this](const auto& change) { focusChanged(change); })) {}

Subscription ApplicationEvents::onMinimized(ProcessID pid, Handler handler,
                                            const std::optional<Minimized>& before) {
  auto subscription = applications_[pid].minimized.add(handler);
  windowsChanged();
  std::vector<WindowKey> missed;
  for (const auto& [window, watched] : watched_)
    if (before && watched.pid == pid && watched.isMinimized && !before->contains(window))
      missed.push_back(watched.window);
  if (!missed.empty() && tellsOfMinimizing())
    for (const auto& window : missed) handler(window);
  return subscription;
}

bool ApplicationEvents::tellsOfMinimizing() const {
  return server_.windowManagerSupports(server_.atoms().netWMStateHidden) && !isDesktopShown();
}

Subscription ApplicationEvents::onFocused(ProcessID pid, Handler handler) {
  return applications_[pid].focused.add(std::move(handler));
}

void ApplicationEvents::windowsChanged() {
  std::erase_if(applications_, [](const auto& entry) {
    return entry.second.minimized.isEmpty() && entry.second.focused.isEmpty();
  });
  const Deadline deadline = server_.patience();
  const auto windows = clientList(server_, server_.atoms().netClientList, deadline);
  const auto owners = owningProcesses(server_, windows, deadline);
  if (hasPassed(deadline)) return;
  std::map<xcb_window_t, ProcessID> wanted;
  for (std::size_t i = 0; i < windows.size(); ++i) {
    const auto application = applications_.find(owners[i]);
    if (application != applications_.end() && !application->second.minimized.isEmpty())
      wanted[windows[i]] = owners[i];
  }
  std::erase_if(watched_, [&](const auto& entry) {
    const auto found = wanted.find(entry.first);
    return found == wanted.end() || found->second != entry.second.pid;
  });
  for (const auto& [window, pid] : wanted)
    if (!watched_.contains(window)) watch(window, pid);
}

void ApplicationEvents::watch(xcb_window_t window, ProcessID pid) {
  const Deadline deadline = server_.patience();
  auto changes = windowEvents_.observe(window, [this, window] { windowChanged(window); });
  auto found = lookAtAll(server_, {window}, Facet::state | Facet::kind, deadline);
  giveIdentities(server_, found, deadline);
  const bool isMinimizedNow = !found.empty() && isMinimized(server_, found.front().state, deadline);
  if (found.empty() || hasPassed(deadline)) return;
  auto& watched = watched_[window];
  watched = {.pid = pid, .window = found.front().key()};
  // A dialog goes with its window; that says nothing about the dialog.
  const auto kind = found.front().kind;
  if (kind == WindowKind::furniture || kind == WindowKind::dialog) return;
  watched.isMinimized = isMinimizedNow;
  watched.changes = std::move(changes);
}

void ApplicationEvents::windowChanged(xcb_window_t window) {
  const auto found = watched_.find(window);
  if (found == watched_.end()) return;
  auto& watched = found->second;
  const Deadline deadline = server_.patience();
  const auto facts = look(server_, watched.window, Facet::state, deadline);
  if (!facts) {
    if (facts.error() == AXError::invalidUIElement) watched_.erase(found);
    return;
  }
  const bool isNow = isMinimized(server_, facts->state, deadline);
  const bool isNews = isNow && !watched.isMinimized && tellsOfMinimizing();
  if (hasPassed(deadline)) return;
  watched.isMinimized = isNow;
  if (!isNews) return;
  const auto application = applications_.find(watched.pid);
  if (application == applications_.end()) return;
  // Copies: a handler may change the maps.
  const auto handlers = application->second.minimized;
  const auto key = watched.window;
  handlers.notify(key);
}

// What is out of the way to show the desktop comes back by itself.
bool ApplicationEvents::isDesktopShown() const {
  auto& connection = server_.connection();
  const auto property = connection.property(connection.root(), server_.atoms().netShowingDesktop)
                            .collect(server_.patience());
  return property && property->firstWord().value_or(0) != 0;
}

void ApplicationEvents::focusChanged(const ActiveWindow::Change& change) {
  const auto application = applications_.find(change.pid);
  if (application == applications_.end() || change.window.kind == WindowKind::furniture) return;
  const auto handlers = application->second.focused;
  handlers.notify(change.window.key());
}

}  // namespace pellow
