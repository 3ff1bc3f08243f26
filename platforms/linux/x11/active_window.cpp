#include "platforms/linux/x11/active_window.h"

#include <utility>

#include "platforms/linux/x11/client_processes.h"

namespace pellow {

ActiveWindow::ActiveWindow(X11Server& server, WindowEvents& windowEvents)
    : server_(server), windowEvents_(windowEvents) {
  refresh();
}

void ActiveWindow::refresh() {
  const Deadline deadline = server_.patience();
  const auto active = activeWindow(server_, deadline);
  if (!active) return;
  auto found = lookAtAll(server_, {*active}, Facet::state | Facet::kind, deadline);
  giveIdentities(server_, found, deadline);
  if (found.empty() || found.front().key() == window_) return;
  const ProcessID pid = owningProcesses(server_, {*active}, deadline).front();
  if (pid == 0) return;

  const Change change{.window = std::move(found.front()),
                      .pid = pid,
                      .isOfOtherApplication = std::exchange(pid_, pid) != pid};
  window_ = change.window.key();
  windowWatch_ = windowEvents_.observe(*active, [this] { windowChanged(); });
  observers_.notify(change);
}

void ActiveWindow::windowChanged() {
  const Deadline deadline = server_.patience();
  const auto now = look(server_, window_, Facet::state, deadline);
  const bool isAway =
      now ? isIconified(server_, now->state, deadline) : now.error() == AXError::invalidUIElement;
  if (!isAway || hasPassed(deadline)) return;
  window_ = {};
  pid_ = 0;
  windowWatch_.cancel();
}

}  // namespace pellow
