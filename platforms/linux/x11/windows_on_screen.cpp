#include "platforms/linux/x11/windows_on_screen.h"

#include <algorithm>
#include <utility>

#include "platforms/linux/x11/client_processes.h"

namespace pellow {

std::vector<WindowOfOwner> windowsOnScreen(X11Server& server, Facet facets, Deadline deadline) {
  auto stacking = clientList(server, server.atoms().netClientListStacking, deadline);
  std::ranges::reverse(stacking);
  auto shown = lookAtAll(server, stacking, facets | Facet::state, deadline);
  const auto desktop = currentDesktop(server, deadline);
  std::erase_if(shown, [&](const WindowFacts& window) {
    return !window.state.isOn(desktop) || !window.state.viewable ||
           isIconified(server, window.state, deadline);
  });
  std::vector<xcb_window_t> ids;
  for (const auto& window : shown) ids.push_back(window.window);
  const auto owners = owningProcesses(server, ids, deadline);
  std::vector<WindowOfOwner> windows;
  for (std::size_t i = 0; i < shown.size(); ++i)
    windows.push_back({std::move(shown[i]), owners[i]});
  return windows;
}

}  // namespace pellow
