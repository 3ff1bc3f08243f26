#include "platforms/linux/x11/application_windows.h"

#include <algorithm>
#include <map>
#include <optional>

#include "platforms/linux/x11/client_processes.h"

namespace pellow {
namespace {

bool isOut(X11Server& server, const WindowFacts& window, Deadline deadline) {
  return window.kind != WindowKind::furniture && !window.state.withdrawn &&
         !isIconified(server, window.state, deadline);
}

// One that has the keys already, or will have, is left alone: a second request could take them from
// the window that the user has gone to since.
void giveKeys(X11Server& server, Foreground& foreground, xcb_window_t window, Deadline deadline) {
  if (activeWindow(server, deadline) != window && server.claimKeys(window))
    foreground.activate(window);
}

}  // namespace

std::vector<xcb_window_t> windowsOf(X11Server& server, ProcessID pid, Deadline deadline) {
  const auto windows = clientList(server, server.atoms().netClientList, deadline);
  const auto owners = owningProcesses(server, windows, deadline);
  std::vector<xcb_window_t> own;
  for (std::size_t i = 0; i < windows.size(); ++i)
    if (owners[i] == pid) own.push_back(windows[i]);
  return own;
}

bool activateApplication(X11Server& server, Foreground& foreground, ProcessID pid,
                         Deadline deadline) {
  constexpr Facet facets = Facet::state | Facet::kind;
  if (const auto front = server.frontWindow(pid)) {
    const auto facts = look(server, *front, facets, deadline);
    if (facts && isOut(server, *facts, deadline)) {
      giveKeys(server, foreground, front->window, deadline);
      return true;
    }
  }
  const auto own = lookAtAll(server, windowsOf(server, pid, deadline), facets, deadline);
  if (own.empty()) return false;
  std::map<xcb_window_t, const WindowFacts*> out;
  for (const auto& window : own)
    if (isOut(server, window, deadline)) out[window.window] = &window;

  const auto desktop = currentDesktop(server, deadline);
  const auto stacking = clientList(server, server.atoms().netClientListStacking, deadline);
  // One on another desktop only where there is none on this one.
  std::optional<xcb_window_t> top;
  for (const auto window : stacking)
    if (out.contains(window) &&
        (!top || out[window]->state.isOn(desktop) || !out[*top]->state.isOn(desktop)))
      top = window;
  if (top) giveKeys(server, foreground, *top, deadline);
  return true;
}

bool isApplicationHidden(X11Server& server, ProcessID pid, Deadline deadline) {
  const auto own =
      lookAtAll(server, windowsOf(server, pid, deadline), Facet::state | Facet::kind, deadline);
  const bool isMarked = std::ranges::any_of(own, [&](const WindowFacts& window) {
    return window.state.belongsToHiddenApplication && isIconified(server, window.state, deadline);
  });
  if (isMarked || !server.isHidden(pid)) return isMarked;
  const auto desktop = currentDesktop(server, deadline);
  return std::ranges::none_of(own, [&](const WindowFacts& window) {
    return isOut(server, window, deadline) && window.state.isOn(desktop);
  });
}

}  // namespace pellow
