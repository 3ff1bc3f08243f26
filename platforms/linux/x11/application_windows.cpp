#include "platforms/linux/x11/application_windows.h"

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

bool isInTaskbar(const WindowFacts& window) {
  return window.kind == WindowKind::standard && !window.state.skipsTaskbar;
}

bool isOut(X11Server& server, const WindowFacts& window, Deadline deadline) {
  return window.kind != WindowKind::furniture && !window.state.withdrawn &&
         !isIconified(server, window.state, deadline);
}

}  // namespace pellow
