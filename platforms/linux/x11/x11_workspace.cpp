#include "platforms/linux/x11/x11_workspace.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>

#include "platforms/linux/system/url_opener.h"
#include "platforms/linux/x11/application_windows.h"
#include "platforms/linux/x11/client_processes.h"
#include "platforms/linux/x11/pixel_image.h"
#include "platforms/linux/x11/text_encoding.h"

namespace pellow {

namespace {

constexpr Seconds hidePatience = 1;

constexpr Facet faceFacets = Facet::kind | Facet::state | Facet::wmClass;

// What stands for applications without a picture of their own.
constexpr const char* anyApplicationIcon = "application-x-executable";

FileDescriptor openProcess(ProcessID pid) {
  return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}

bool isReadable(const FileDescriptor& descriptor) {
  pollfd poller{descriptor.number(), POLLIN, 0};
  return poll(&poller, 1, 0) > 0;
}

std::string commandName(ProcessID pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
  std::string name;
  std::getline(file, name);
  return validUTF8(name);
}

bool isInTaskbar(const WindowFacts& window) {
  return window.kind == WindowKind::standard && !window.state.skipsTaskbar;
}

template <class Name>
std::optional<std::string> nonEmpty(const Name& name) {
  return name.empty() ? std::nullopt : std::optional<std::string>(name);
}

}  // namespace

X11Workspace::X11Workspace(X11Server& server, WindowManager& windowManager,
                           WindowEvents& windowEvents, ActiveWindow& activeWindow, int pollSet,
                           LoadIcon loadIcon)
    : server_(server),
      windowManager_(windowManager),
      windowEvents_(windowEvents),
      pollSet_(pollSet),
      loadIcon_(std::move(loadIcon)),
      activeWatch_(activeWindow.onChange([this](const ActiveWindow::Change& change) {
        if (!change.isOfOtherApplication) return;
        activationObservers_.notify(change.pid);
      })) {
  windowsChanged();
  // Applications that a crashed Pellow had hidden.
  const Deadline deadline = deadlineIn(serverPatience);
  const auto windows = clientList(server_, server_.atoms().netClientList, deadline);
  for (const auto& window : lookAtAll(server_, windows, Facet::state, deadline))
    if (window.state.belongsToHiddenApplication) watchHidden(window.window);
  // Somebody may have shown them since. That is checked with the first events, not before this
  // process is the one Pellow: another one may be hiding the windows right now.
  windowEvents_.noteAll();
}

X11Workspace::Windows X11Workspace::windowsOf(ProcessID pid, Facet facets) const {
  const Deadline deadline = deadlineIn(serverPatience);
  return lookAtAll(server_, pellow::windowsOf(server_, pid, deadline), facets, deadline);
}

// A launch forgets what it knows of windows whose application does not run.
std::vector<RunningApplication> X11Workspace::runningApplications() {
  const Deadline deadline = deadlineIn(longServerPatience);
  const auto windows = clientList(server_, server_.atoms().netClientList, deadline);
  const auto owners = owningProcesses(server_, windows, deadline);
  std::map<xcb_window_t, ProcessID> ownerOf;
  for (std::size_t i = 0; i < windows.size(); ++i) ownerOf[windows[i]] = owners[i];

  std::vector<ProcessID> order;
  std::map<ProcessID, Windows> groups;
  for (auto& window : lookAtAll(server_, windows, faceFacets, deadline)) {
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
  const auto own = pellow::windowsOf(server_, pid, deadlineIn(serverPatience));
  // The first ordinary window says it all, and an application may have hundreds.
  constexpr std::ptrdiff_t atOnce = 4;
  Windows seen;
  for (auto next = own.begin(); next != own.end() && std::ranges::none_of(seen, isInTaskbar);) {
    const auto end = next + std::min(atOnce, own.end() - next);
    for (auto& window : lookAtAll(server_, {next, end}, faceFacets, deadlineIn(serverPatience)))
      seen.push_back(std::move(window));
    next = end;
  }
  if (seen.empty()) return std::nullopt;
  return describe(pid, seen);
}

RunningApplication X11Workspace::thisProcess() const {
  return {.pid = getpid(),
          .bundleID = "com.velloway.pellow",
          .localizedName = "Pellow",
          .activationPolicy = ActivationPolicy::accessory};
}

RunningApplication X11Workspace::describe(ProcessID pid, const Windows& own) {
  // Whoever has been told of an application hears of its end, even if the events of its first and
  // last window are handled together.
  withWindows_.insert(pid);
  const auto ordinary =
      std::ranges::find_if(own, [](const WindowFacts& window) { return isInTaskbar(window); });
  const auto& face = ordinary != own.end() ? *ordinary : own.front();
  const auto* entry = entries_.find(face.instanceName, face.className);
  const auto windowClass = nonEmpty(face.className);
  return {.pid = pid,
          .bundleID = entry ? entry->id : windowClass,
          .localizedName =
              entry && !entry->name.empty() ? entry->name : windowClass.value_or(commandName(pid)),
          .icon = icon(entry, pid, face.window),
          .activationPolicy =
              ordinary != own.end() ? ActivationPolicy::regular : ActivationPolicy::accessory};
}

std::optional<Image> X11Workspace::icon(const DesktopEntry* entry, ProcessID pid,
                                        xcb_window_t window) {
  if (entry && !entry->icon.empty())
    if (auto image = themeIcon(entry->icon)) return image;
  if (const auto known = windowIcons_.find(pid); known != windowIcons_.end()) return known->second;
  const auto facts = WindowLook(server_, server_.connection(), window, Facet::icon)
                         .collect(deadlineIn(serverPatience));
  const auto image =
      facts ? PixelImage::fromIconProperty(facts->icon, server_.layout().scale) : std::nullopt;
  if (!image) return themeIcon(anyApplicationIcon);
  windowIcons_.emplace(pid, *image);
  return image;
}

std::optional<Image> X11Workspace::themeIcon(const std::string& name) {
  const auto known = themeIcons_.find(name);
  if (known != themeIcons_.end()) return known->second;
  auto image = loadIcon_ ? loadIcon_(name) : std::nullopt;
  return themeIcons_.emplace(name, std::move(image)).first->second;
}

std::optional<ProcessID> X11Workspace::frontmostApplication() {
  const Deadline deadline = deadlineIn(serverPatience);
  const auto active = activeWindow(server_, deadline);
  if (!active) return std::nullopt;
  const ProcessID pid = owningProcesses(server_, {*active}, deadline).front();
  return pid == 0 ? std::nullopt : std::optional(pid);
}

bool X11Workspace::activate(ProcessID pid) {
  return activateApplication(server_, windowManager_.foreground(), pid, deadlineIn(serverPatience));
}

bool X11Workspace::hasWindowsOnOtherSpaces(ProcessID pid) {
  const auto shown = currentDesktop(server_, deadlineIn(serverPatience));
  return std::ranges::any_of(
      windowsOf(pid, Facet::state | Facet::kind), [shown](const WindowFacts& window) {
        return window.kind != WindowKind::furniture && !window.state.isOn(shown);
      });
}

bool X11Workspace::open(std::string_view url) { return openURL(url); }

void X11Workspace::markHidden(xcb_window_t window, bool isHidden) {
  auto& connection = server_.connection();
  const std::uint32_t mark = 1;
  if (isHidden)
    xcb_change_property(connection.raw(), XCB_PROP_MODE_REPLACE, window,
                        server_.atoms().pellowHidden, XCB_ATOM_CARDINAL, 32, 1, &mark);
  else
    xcb_delete_property(connection.raw(), window, server_.atoms().pellowHidden);
}

void X11Workspace::watchHidden(xcb_window_t window) {
  hidden_[window] = {
      windowEvents_.observe(window, [this, window] { hiddenWindowChanged(window); })};
}

bool X11Workspace::hide(ProcessID pid) {
  if (pid == getpid()) return false;
  auto own = windowsOf(pid, Facet::state | Facet::kind);
  std::erase_if(own,
                [](const WindowFacts& window) { return window.kind == WindowKind::furniture; });
  if (own.empty()) return false;

  const Deadline deadline = deadlineIn(hidePatience);
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
  // Before they go, so that nobody ever takes one of these windows for minimized, and none comes
  // back unseen.
  for (const auto& window : shown) {
    markHidden(window.window, true);
    watchHidden(window.window);
  }
  const bool isHidden = windowManager_.iconifier().iconify(shown, deadline);
  server_.setHidden(pid, isHidden);
  if (!isHidden) takeBack(shown);
  return isHidden;
}

// A late window manager may still do what it was asked. Windows that have not followed keep their
// marks, and are shown again if they do; those it refuses to iconify never do.
void X11Workspace::takeBack(const std::vector<WindowKey>& windows) {
  std::vector<WindowKey> followed;
  const Deadline deadline = deadlineIn(serverPatience);
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

void X11Workspace::showAgain(const std::vector<WindowKey>& windows) {
  windowManager_.iconifier().deiconify(windows, deadlineIn(hidePatience));
  // The marks go last, for the reason they came first.
  for (const auto& window : windows) markHidden(window.window, false);
  server_.connection().flush();
}

bool X11Workspace::unhide(ProcessID pid) {
  const Deadline deadline = deadlineIn(serverPatience);
  std::vector<WindowKey> hidden;
  auto own = windowsOf(pid, Facet::state);
  giveIdentities(server_, own, deadline);
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

void X11Workspace::hiddenWindowChanged(xcb_window_t window) {
  const auto known = hidden_.find(window);
  if (known == hidden_.end()) return;
  const Deadline deadline = deadlineIn(serverPatience);
  const auto facts =
      WindowLook(server_, server_.connection(), window, Facet::state).collect(deadline);
  if (!facts) {
    if (facts.error() == AXError::invalidUIElement) hidden_.erase(known);
    return;
  }
  if (facts->state.withdrawn) {
    hidden_.erase(known);
    markHidden(window, false);
    return server_.connection().flush();
  }
  // Everything is looked at again once a window manager that takes over has settled.
  if (!server_.isWindowManagerSettled(deadline)) return;
  if (isIconified(server_, facts->state, deadline) != known->second.isToShow) return;
  const ProcessID owner = owningProcesses(server_, {window}, deadline).front();
  if (owner != 0) unhide(owner);
}

Subscription X11Workspace::onDidActivateApplication(std::function<void(ProcessID)> observer) {
  return activationObservers_.add(std::move(observer));
}

Subscription X11Workspace::onDidBecomeRegular(std::function<void(ProcessID)> observer) {
  return regularObservers_.add(std::move(observer));
}

Subscription X11Workspace::onDidTerminateApplication(std::function<void(ProcessID)> observer) {
  return terminationObservers_.add(std::move(observer));
}

Subscription X11Workspace::onDidChangeActiveSpace(std::function<void()> observer) {
  return spaceObservers_.add(std::move(observer));
}

X11Workspace::Owners X11Workspace::ownersOf(const std::vector<xcb_window_t>& windows) const {
  const auto processes = owningProcesses(server_, windows, deadlineIn(serverPatience));
  Owners owners;
  for (std::size_t i = 0; i < windows.size(); ++i)
    if (processes[i] != 0 && processes[i] != getpid()) owners[windows[i]] = processes[i];
  return owners;
}

void X11Workspace::windowsChanged() {
  const auto windows =
      clientList(server_, server_.atoms().netClientList, deadlineIn(serverPatience));
  auto owners = ownersOf(windows);
  keepClientsWithoutProcess(owners);
  std::set<ProcessID> now;
  for (const auto& [window, pid] : owners) now.insert(pid);
  std::vector<ProcessID> gone;
  std::ranges::set_difference(withWindows_, now, std::back_inserter(gone));
  for (const auto pid : now) leaving_.erase(pid);
  withWindows_ = std::move(now);
  for (const auto pid : gone) watchForEnd(pid);
  notice(owners);
}

// Only its windows tell whether such a client lives on, and a window manager that takes over may
// list none of them for a moment.
void X11Workspace::keepClientsWithoutProcess(Owners& now) const {
  const Deadline deadline = deadlineIn(serverPatience);
  for (const auto& [window, pid] : owners_) {
    if (pid > 0 || now.contains(window)) continue;
    const auto facts = WindowLook(server_, server_.connection(), window, Facet{}).collect(deadline);
    if (facts || facts.error() != AXError::invalidUIElement) now[window] = pid;
  }
}

void X11Workspace::notice(const Owners& now) {
  std::vector<xcb_window_t> fresh;
  for (const auto& [window, pid] : now) {
    const auto before = owners_.find(window);
    const bool isKnown = before != owners_.end() && before->second == pid;
    if (!isKnown && !regular_.contains(pid)) fresh.push_back(window);
  }
  owners_ = now;
  server_.setOwners(now);
  std::vector<ProcessID> launches;
  for (const auto& window : lookAtAll(server_, fresh, faceFacets, deadlineIn(serverPatience)))
    if (const auto pid = now.at(window.window); isInTaskbar(window) && regular_.insert(pid).second)
      launches.push_back(pid);
  for (const auto pid : launches) regularObservers_.notify(pid);
}

void X11Workspace::watchForEnd(ProcessID pid) {
  auto process = pid > 0 ? openProcess(pid) : FileDescriptor();
  if (process ? isReadable(process) : !isAlive(pid)) return end(pid);
  if (!process) {  // out of descriptors: the next change of the windows asks again
    withWindows_.insert(pid);
    return;
  }
  epoll_event interest{.events = EPOLLIN, .data = {.fd = process.number()}};
  epoll_ctl(pollSet_, EPOLL_CTL_ADD, process.number(), &interest);
  leaving_.insert_or_assign(pid, std::move(process));
}

void X11Workspace::processEnded() {
  std::vector<ProcessID> ended;
  for (const auto& [pid, process] : leaving_)
    if (isReadable(process)) ended.push_back(pid);
  for (const auto pid : ended) {
    leaving_.erase(pid);
    end(pid);
  }
}

void X11Workspace::end(ProcessID pid) {
  windowIcons_.erase(pid);
  regular_.erase(pid);
  server_.forgetApplication(pid);
  terminationObservers_.notify(pid);
}

}  // namespace pellow
