#include "platforms/linux/x11/x11_workspace.h"

#include <unistd.h>

#include <algorithm>

#include "platforms/linux/system/url_opener.h"
#include "platforms/linux/x11/application_windows.h"
#include "platforms/linux/x11/client_processes.h"
#include "platforms/linux/x11/windows_on_screen.h"

namespace pellow {

X11Workspace::X11Workspace(X11Server& server, Foreground& foreground, Iconifier& iconifier,
                           WindowEvents& windowEvents, ActiveWindow& activeWindow, int pollSet,
                           ApplicationFaces::LoadIcon loadIcon)
    : server_(server),
      foreground_(foreground),
      faces_(server, std::move(loadIcon)),
      lifecycle_(server, pollSet),
      endWatch_(lifecycle_.onEnd([this](ProcessID pid) { faces_.forget(pid); })),
      hiding_(server, iconifier, windowEvents),
      activation_(server, activeWindow),
      keyboardRest_(server) {}

// A launch forgets what it knows of windows whose application does not run.
std::vector<RunningApplication> X11Workspace::runningApplications() {
  const Deadline deadline = deadlineIn(longServerPatience);
  const auto windows = clientList(server_, server_.atoms().netClientList, deadline);
  const auto owners = owningProcesses(server_, windows, deadline);
  std::map<xcb_window_t, ProcessID> ownerOf;
  for (std::size_t i = 0; i < windows.size(); ++i) ownerOf[windows[i]] = owners[i];

  std::vector<ProcessID> order;
  std::map<ProcessID, std::vector<WindowFacts>> groups;
  for (auto& window : lookAtAll(server_, windows, ApplicationFaces::facets, deadline)) {
    const ProcessID pid = ownerOf[window.window];
    auto& group = groups[pid];
    if (group.empty()) order.push_back(pid);
    group.push_back(std::move(window));
  }
  std::vector<RunningApplication> applications;
  for (const auto pid : order)
    if (pid != 0 && pid != getpid()) applications.push_back(describe(pid, groups[pid]));
  applications.push_back(thisProcess());
  return applications;
}

std::optional<RunningApplication> X11Workspace::application(ProcessID pid) {
  if (pid == getpid()) return thisProcess();
  const auto own = windowsOf(server_, pid, deadlineIn(serverPatience));
  // The first ordinary window says it all, and an application may have hundreds.
  constexpr std::ptrdiff_t atOnce = 4;
  std::vector<WindowFacts> seen;
  for (auto next = own.begin(); next != own.end() && std::ranges::none_of(seen, isInTaskbar);) {
    const auto end = next + std::min(atOnce, own.end() - next);
    for (auto& window :
         lookAtAll(server_, {next, end}, ApplicationFaces::facets, deadlineIn(serverPatience)))
      seen.push_back(std::move(window));
    next = end;
  }
  if (seen.empty()) return std::nullopt;
  return describe(pid, seen);
}

RunningApplication X11Workspace::describe(ProcessID pid, const std::vector<WindowFacts>& windows) {
  lifecycle_.promiseEnd(pid);
  return faces_.describe(pid, windows);
}

RunningApplication X11Workspace::thisProcess() const {
  return {.pid = getpid(),
          .bundleID = "com.velloway.pellow",
          .localizedName = "Pellow",
          .activationPolicy = ActivationPolicy::accessory};
}

std::optional<ProcessID> X11Workspace::frontmostApplication() { return activation_.frontmost(); }

bool X11Workspace::hide(ProcessID pid) { return hiding_.hide(pid); }
bool X11Workspace::unhide(ProcessID pid) { return hiding_.unhide(pid); }

bool X11Workspace::activate(ProcessID pid) {
  return activateApplication(server_, foreground_, pid, deadlineIn(serverPatience));
}

std::vector<WindowOnScreen> X11Workspace::windowsOnScreen() {
  const auto layout = server_.layout();
  std::vector<WindowOnScreen> windows;
  for (const auto& [window, owner] :
       pellow::windowsOnScreen(server_, Facet::frame | Facet::kind, deadlineIn(serverPatience)))
    if (owner != 0 && window.kind == WindowKind::standard)
      windows.push_back({owner, layout.toQuartz(window.frame)});
  return windows;
}

bool X11Workspace::keepsWindowsOnDisplays() {
  return server_.windowManager().paintsByItsOwnBook &&
         server_.windowManagerComposites(deadlineIn(serverPatience));
}

bool X11Workspace::hasWindowsOnOtherSpaces(ProcessID pid) {
  const auto shown = currentDesktop(server_, deadlineIn(serverPatience));
  const auto own =
      lookAtWindowsOf(server_, pid, Facet::state | Facet::kind, deadlineIn(serverPatience));
  return std::ranges::any_of(own, [shown](const WindowFacts& window) {
    return window.kind != WindowKind::furniture && !window.state.isOn(shown);
  });
}

bool X11Workspace::open(std::string_view url) { return openURL(url); }

Subscription X11Workspace::onDidActivateApplication(std::function<void(ProcessID)> observer) {
  return activation_.onChange(std::move(observer));
}

Subscription X11Workspace::onDidBecomeRegular(std::function<void(ProcessID)> observer) {
  return lifecycle_.onLaunch(std::move(observer));
}

Subscription X11Workspace::onDidTerminateApplication(std::function<void(ProcessID)> observer) {
  return lifecycle_.onEnd(std::move(observer));
}

Subscription X11Workspace::onDidChangeActiveSpace(std::function<void()> observer) {
  return spaceObservers_.add(std::move(observer));
}

}  // namespace pellow
