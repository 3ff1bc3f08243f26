#include "platforms/linux/x11/x11_workspace.h"

#include <fmt/format.h>
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
      endWatch_(lifecycle_.onEnd([this](ProcessID pid) {
        faces_.forget(pid);
        std::erase_if(applications_, [pid](const auto& each) { return each.pid == pid; });
      })),
      hiding_(server, iconifier, windowEvents),
      activation_(server, activeWindow),
      keyboardRest_(server) {}

// A launch forgets what it knows of windows whose application does not run.
std::vector<RunningApplication> X11Workspace::runningApplications() {
  const Deadline deadline = server_.patience(longServerPatience);
  auto applications = server_.answers() ? lookForAll(deadline) : std::vector<RunningApplication>{};
  if (!deadline.hasMetSilence()) applications_ = std::move(applications);
  return applications_;
}

std::vector<RunningApplication> X11Workspace::lookForAll(Deadline deadline) {
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
  const Deadline deadline = server_.patience();
  auto found = lookFor(pid, deadline);
  const auto known = std::ranges::find(applications_, pid, &RunningApplication::pid);
  if (deadline.hasMetSilence())
    return known != applications_.end() ? std::optional(*known) : std::nullopt;
  if (known != applications_.end())
    found ? void(*known = *found) : void(applications_.erase(known));
  else if (found)
    applications_.insert(applications_.begin(), *found);
  return found;
}

std::optional<RunningApplication> X11Workspace::lookFor(ProcessID pid, Deadline deadline) {
  const auto own = windowsOf(server_, pid, deadline);
  // The first ordinary window says it all, and an application may have hundreds.
  constexpr std::ptrdiff_t atOnce = 4;
  std::vector<WindowFacts> seen;
  for (auto next = own.begin(); next != own.end() && std::ranges::none_of(seen, isInTaskbar);) {
    const auto end = next + std::min(atOnce, own.end() - next);
    for (auto& window : lookAtAll(server_, {next, end}, ApplicationFaces::facets, deadline))
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

bool X11Workspace::hide(ProcessID pid) {
  return perform({pid, [this](ProcessID asked) { return hiding_.hide(asked); }});
}

bool X11Workspace::unhide(ProcessID pid) {
  return perform({pid, [this](ProcessID asked) { return hiding_.unhide(asked); }});
}

bool X11Workspace::activate(ProcessID pid) {
  return perform({pid, [this](ProcessID asked) {
                    return activateApplication(server_, foreground_, asked, server_.patience());
                  }});
}

void X11Workspace::activateDesktop() {
  perform({getpid(), [this](ProcessID) {
             keyboardRest_.take();
             return true;
           }});
}

bool X11Workspace::perform(Request request) {
  catchUp();
  if (requests_.empty()) {
    const Deadline deadline = server_.patience();
    const bool isDone = server_.answers() && request.act(request.pid);
    if (!deadline.hasMetSilence()) return isDone;
  }
  const ProcessID pid = request.pid;
  requests_.push_back(std::move(request));
  return pid < 0 || isAlive(pid);
}

void X11Workspace::catchUp() {
  while (!requests_.empty() && server_.answers()) {
    const Deadline deadline = server_.patience();
    const auto& [pid, act] = requests_.front();
    act(pid);
    if (deadline.hasMetSilence()) return;
    requests_.pop_front();
  }
}

std::vector<WindowOnScreen> X11Workspace::windowsOnScreen() {
  const Deadline deadline = server_.patience();
  const auto layout = server_.layout();
  std::vector<WindowOnScreen> windows;
  for (const auto& [window, owner] :
       pellow::windowsOnScreen(server_, Facet::frame | Facet::kind, deadline))
    if (owner != 0 && window.kind == WindowKind::standard)
      windows.push_back({owner, layout.toQuartz(window.frame)});
  if (!deadline.hasMetSilence()) onScreen_ = std::move(windows);
  return onScreen_;
}

bool X11Workspace::keepsWindowsOnDisplays() {
  if (!server_.windowManager().paintsByItsOwnBook) return false;
  const Deadline deadline = server_.patience();
  const bool areKept = server_.compositor(deadline) == X11Server::Compositor::windowManager;
  if (!deadline.hasMetSilence()) areWindowsKept_ = areKept;
  return areWindowsKept_;
}

std::string X11Workspace::windowServerDescription() {
  const auto name = server_.windowManagerName();
  const auto painter = [compositor = server_.compositor(server_.patience())] {
    switch (compositor) {
      case X11Server::Compositor::none:
        return "no compositor";
      case X11Server::Compositor::windowManager:
        return "its own compositor";
      case X11Server::Compositor::otherProgram:
        return "the compositor of another program";
    }
    return "";
  };
  return fmt::format("{} on X11, with {}", name.empty() ? "a nameless window manager" : name,
                     painter());
}

bool X11Workspace::hasWindowsOnOtherSpaces(ProcessID pid) {
  const Deadline deadline = server_.patience();
  const auto shown = currentDesktop(server_, deadline);
  const auto own = lookAtWindowsOf(server_, pid, Facet::state | Facet::kind, deadline);
  const bool areElsewhere = std::ranges::any_of(own, [shown](const WindowFacts& window) {
    return window.kind != WindowKind::furniture && !window.state.isOn(shown);
  });
  return areElsewhere || deadline.hasMetSilence();  // it may have some
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
