#include "platforms/linux/x11/application_activation.h"

#include <map>

#include "platforms/linux/x11/application_windows.h"
#include "platforms/linux/x11/client_processes.h"

namespace pellow {

namespace {

// One that has the keys already, or will have, is left alone: a second request could take them from
// the window that the user has gone to since.
void giveKeys(X11Server& server, Foreground& foreground, xcb_window_t window, Deadline deadline) {
  if (activeWindow(server, deadline) != window && server.claimKeys(window))
    foreground.activate(window);
}

}  // namespace

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
  const auto own = lookAtWindowsOf(server, pid, facets, deadline);
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

ApplicationActivation::ApplicationActivation(X11Server& server, ActiveWindow& activeWindow)
    : server_(server),
      activeWatch_(activeWindow.onChange([this](const ActiveWindow::Change& change) {
        last_ = change.pid;
        if (change.isOfOtherApplication) observers_.notify(change.pid);
      })) {}

std::optional<ProcessID> ApplicationActivation::frontmost() {
  const Deadline deadline = server_.patience();
  const auto active = activeWindow(server_, deadline);
  const ProcessID pid = active ? owningProcesses(server_, {*active}, deadline).front() : 0;
  const auto now = pid == 0 ? std::nullopt : std::optional(pid);
  if (!deadline.hold) return now;
  if (!hasPassed(deadline)) last_ = now;
  return last_;
}

}  // namespace pellow
