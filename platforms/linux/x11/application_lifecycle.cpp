#include "platforms/linux/x11/application_lifecycle.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

#include "platforms/linux/x11/application_windows.h"
#include "platforms/linux/x11/client_processes.h"

namespace pellow {

namespace {

FileDescriptor openProcess(ProcessID pid) {
  return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}

bool isReadable(const FileDescriptor& descriptor) {
  pollfd poller{descriptor.number(), POLLIN, 0};
  return poll(&poller, 1, 0) > 0;
}

}  // namespace

ApplicationLifecycle::ApplicationLifecycle(X11Server& server, int pollSet)
    : server_(server), pollSet_(pollSet) {
  windowsChanged();
}

void ApplicationLifecycle::windowsChanged() {
  const Deadline deadline = server_.patience();
  auto owners = ownersOf(clientList(server_, server_.atoms().netClientList, deadline), deadline);
  keepClientsWithoutProcess(owners, deadline);
  const auto launches = launchesAmong(owners, deadline);
  if (hasPassed(deadline)) return;
  std::set<ProcessID> now;
  for (const auto& [window, pid] : owners) now.insert(pid);
  std::vector<ProcessID> gone;
  std::ranges::set_difference(withWindows_, now, std::back_inserter(gone));
  for (const auto pid : now) leaving_.erase(pid);
  withWindows_ = std::move(now);
  for (const auto pid : gone) watchForEnd(pid);
  owners_ = std::move(owners);
  server_.setOwners(owners_);
  for (const auto pid : launches)
    if (regular_.insert(pid).second) launchObservers_.notify(pid);
}

ApplicationLifecycle::Owners ApplicationLifecycle::ownersOf(
    const std::vector<xcb_window_t>& windows, Deadline deadline) const {
  const auto processes = owningProcesses(server_, windows, deadline);
  Owners owners;
  for (std::size_t i = 0; i < windows.size(); ++i)
    if (processes[i] != 0 && processes[i] != getpid()) owners[windows[i]] = processes[i];
  return owners;
}

// Only its windows tell whether such a client lives on, and a window manager that takes over may
// list none of them for a moment.
void ApplicationLifecycle::keepClientsWithoutProcess(Owners& now, Deadline deadline) const {
  for (const auto& [window, pid] : owners_) {
    if (pid > 0 || now.contains(window)) continue;
    const auto facts = WindowLook(server_, server_.connection(), window, Facet{}).collect(deadline);
    if (facts || facts.error() != AXError::invalidUIElement) now[window] = pid;
  }
}

std::vector<ProcessID> ApplicationLifecycle::launchesAmong(const Owners& now,
                                                           Deadline deadline) const {
  std::vector<xcb_window_t> fresh;
  for (const auto& [window, pid] : now) {
    const auto before = owners_.find(window);
    const bool isKnown = before != owners_.end() && before->second == pid;
    if (!isKnown && !regular_.contains(pid)) fresh.push_back(window);
  }
  std::vector<ProcessID> launches;
  for (const auto& window : lookAtAll(server_, fresh, taskbarFacets, deadline))
    if (isInTaskbar(window)) launches.push_back(now.at(window.window));
  return launches;
}

void ApplicationLifecycle::watchForEnd(ProcessID pid) {
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

void ApplicationLifecycle::processEnded() {
  std::vector<ProcessID> ended;
  for (const auto& [pid, process] : leaving_)
    if (isReadable(process)) ended.push_back(pid);
  for (const auto pid : ended) {
    leaving_.erase(pid);
    end(pid);
  }
}

void ApplicationLifecycle::end(ProcessID pid) {
  regular_.erase(pid);
  server_.forgetApplication(pid);
  endObservers_.notify(pid);
}

}  // namespace pellow
