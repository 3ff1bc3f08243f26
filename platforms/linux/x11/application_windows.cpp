#include "platforms/linux/x11/application_windows.h"

#include <algorithm>

#include "platforms/linux/x11/client_processes.h"

namespace pellow {

std::vector<xcb_window_t> windowsOf(X11Server& server, ProcessID pid, Deadline deadline) {
  const auto windows = clientList(server, server.atoms().netClientList, deadline);
  const auto owners = owningProcesses(server, windows, deadline);
  std::vector<xcb_window_t> own;
  for (std::size_t i = 0; i < windows.size(); ++i)
    if (owners[i] == pid) own.push_back(windows[i]);
  return own;
}

std::vector<WindowFacts> lookAtWindowsOf(X11Server& server, ProcessID pid, Facet facets,
                                         Deadline deadline) {
  return lookAtAll(server, windowsOf(server, pid, deadline), facets, deadline);
}

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

bool isInTaskbar(const WindowFacts& window) {
  return window.kind == WindowKind::standard && !window.state.skipsTaskbar;
}

bool isOut(X11Server& server, const WindowFacts& window, Deadline deadline) {
  return window.kind != WindowKind::furniture && !window.state.withdrawn &&
         !isIconified(server, window.state, deadline);
}

}  // namespace pellow
