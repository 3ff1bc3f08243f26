#include "platforms/linux/x11/x11_server.h"

#include "platforms/linux/x11/text_encoding.h"

namespace pellow {

std::expected<std::unique_ptr<X11Server>, SystemError> X11Server::open(
    const std::string& displayName) {
  auto connection = X11Connection::open(displayName);
  if (!connection) return std::unexpected(connection.error());
  return std::unique_ptr<X11Server>(new X11Server(displayName, std::move(*connection)));
}

X11Server::X11Server(std::string displayName, std::unique_ptr<X11Connection> first)
    : displayName_(std::move(displayName)),
      atoms_(X11Atoms::intern(first->raw())),
      windowManagerSelection_(
          internAtom(first->raw(), "WM_S" + std::to_string(first->screenNumber()))),
      compositorSelection_(
          internAtom(first->raw(), "_NET_WM_CM_S" + std::to_string(first->screenNumber()))) {
  connections_.emplace(std::this_thread::get_id(), std::move(first));
}

// A connection is opened without the lock: another client may have grabbed the server, even this
// process, on another thread.
X11Connection& X11Server::connection() {
  const auto thread = std::this_thread::get_id();
  {
    const std::lock_guard lock(mutex_);
    if (const auto found = connections_.find(thread); found != connections_.end())
      return *found->second;
  }
  auto opened = X11Connection::openOrLost(displayName_);
  const std::lock_guard lock(mutex_);
  return *connections_.emplace(thread, std::move(opened)).first->second;
}

Deadline X11Server::patience(Seconds most) const {
  auto deadline = deadlineIn(most);
  auto* const hold = hold_.load();
  if (!hold || std::this_thread::get_id() != mainThread_) return deadline;
  deadline.hold = hold;
  deadline.unanswered = hold->unanswered();
  return deadline;
}

bool X11Server::answers() {
  const Deadline deadline = patience();
  if (!deadline.hold) return true;
  if (!deadline.hold->isOn()) return connection().isAnswered(deadline);
  deadline.hold->noteUnanswered();
  return false;
}

ScreenLayout X11Server::layout() const {
  const std::lock_guard lock(mutex_);
  return layout_;
}

void X11Server::setLayout(ScreenLayout layout) {
  const std::lock_guard lock(mutex_);
  layout_ = std::move(layout);
}

bool X11Server::windowManagerSupports(xcb_atom_t hint) const {
  const std::lock_guard lock(mutex_);
  return supported_.contains(hint);
}

const WindowManagerTraits& X11Server::windowManager() const {
  const std::lock_guard lock(mutex_);
  return *windowManager_;
}

bool X11Server::readWindowManager() {
  auto& own = connection();
  const Deadline deadline = patience();
  auto pendingCheck = own.property(own.root(), atoms_.netSupportingWMCheck);
  auto pendingSupported = own.property(own.root(), atoms_.netSupported);
  const auto check = pendingCheck.collect(deadline);
  const auto supported = pendingSupported.collect(deadline);
  const auto manager = check ? check->firstWord() : std::nullopt;
  if (!manager || !supported) return false;

  // A killed window manager leaves the property on the root, but not its own window.
  auto pendingName = own.property(*manager, atoms_.netWMName);
  const auto proof = own.property(*manager, atoms_.netSupportingWMCheck).collect(deadline);
  const auto name = pendingName.collect(deadline);
  if (!proof || proof->firstWord() != manager) return false;

  const auto hints = supported->words();
  const std::lock_guard lock(mutex_);
  supported_ = {hints.begin(), hints.end()};
  windowManagerName_ = name ? name->bytes : "";
  windowManager_ = &traitsOf(windowManagerName_);
  lacks_.clear();
  for (const auto& [hint, hintName] :
       {std::pair(atoms_.netActiveWindow, "_NET_ACTIVE_WINDOW"),
        std::pair(atoms_.netClientList, "_NET_CLIENT_LIST"),
        std::pair(atoms_.netMoveResizeWindow, "_NET_MOVERESIZE_WINDOW")})
    if (!supported_.contains(hint)) lacks_.emplace_back(hintName);
  return lacks_.empty();
}

std::vector<std::string> X11Server::windowManagerLacks() const {
  const std::lock_guard lock(mutex_);
  return lacks_;
}

std::optional<X11Server::Reign> X11Server::reign(Deadline deadline) {
  auto& own = connection();
  auto pendingOwner = own.pending<xcb_get_selection_owner_reply_t>(
      xcb_get_selection_owner(own.raw(), windowManagerSelection_));
  const auto check = own.property(own.root(), atoms_.netSupportingWMCheck).collect(deadline);
  const auto owner = pendingOwner.collect(deadline);
  const auto manager = check ? check->firstWord() : std::nullopt;
  if (!manager || !owner) return std::nullopt;
  const auto proof = own.property(*manager, atoms_.netSupportingWMCheck).collect(deadline);
  if (!proof || proof->firstWord() != manager) return std::nullopt;
  return Reign{(*owner)->owner, *manager};
}

std::string X11Server::windowManagerName() const {
  const std::lock_guard lock(mutex_);
  return windowManagerName_;
}

X11Server::Compositor X11Server::compositor(Deadline deadline) {
  auto& own = connection();
  auto pendingOwner = own.pending<xcb_get_selection_owner_reply_t>(
      xcb_get_selection_owner(own.raw(), compositorSelection_));
  const auto check = own.property(own.root(), atoms_.netSupportingWMCheck).collect(deadline);
  const auto owner = pendingOwner.collect(deadline);
  const auto manager = check ? check->firstWord() : std::nullopt;
  if (!owner || (*owner)->owner == XCB_WINDOW_NONE) return Compositor::none;
  // All windows of one client are numbered alike in the bits that the mask leaves.
  const auto client = ~xcb_get_setup(own.raw())->resource_id_mask;
  const bool isSameClient = manager && ((*owner)->owner & client) == (*manager & client);
  return isSameClient ? Compositor::windowManager : Compositor::otherProgram;
}

bool X11Server::isWindowManagerSettled(Deadline deadline) {
  const auto now = reign(deadline);
  const std::lock_guard lock(mutex_);
  return now && now == settled_;
}

void X11Server::unsettleWindowManager() {
  const std::lock_guard lock(mutex_);
  settled_.reset();
}

bool X11Server::settleWindowManager(Deadline deadline) {
  const auto now = reign(deadline);
  const std::lock_guard lock(mutex_);
  if (!now || now == settled_) return false;
  // The old one may still empty its list while the new one waits.
  if (settled_ && now->check == settled_->check) return false;
  settled_ = now;
  return true;
}

void X11Server::setOwners(std::map<xcb_window_t, ProcessID> owners) {
  const std::lock_guard lock(mutex_);
  owners_ = std::move(owners);
  if (!owners_.empty())
    std::erase_if(parents_, [&](const auto& entry) { return !owners_.contains(entry.first); });
}

std::optional<ProcessID> X11Server::knownOwner(xcb_window_t window) const {
  const std::lock_guard lock(mutex_);
  const auto found = owners_.find(window);
  if (found == owners_.end()) return std::nullopt;
  return found->second;
}

void X11Server::setParent(xcb_window_t window, xcb_window_t parent) {
  const std::lock_guard lock(mutex_);
  parents_[window] = parent;
}

xcb_window_t X11Server::lastParent(xcb_window_t window) const {
  const std::lock_guard lock(mutex_);
  const auto found = parents_.find(window);
  return found == parents_.end() ? XCB_WINDOW_NONE : found->second;
}

void X11Server::setFrontWindow(ProcessID pid, WindowKey window) {
  const std::lock_guard lock(mutex_);
  frontWindows_[pid] = window;
  keysClaimedFor_ = XCB_WINDOW_NONE;
}

std::optional<WindowKey> X11Server::frontWindow(ProcessID pid) const {
  const std::lock_guard lock(mutex_);
  const auto found = frontWindows_.find(pid);
  if (found == frontWindows_.end()) return std::nullopt;
  return found->second;
}

bool X11Server::claimKeys(xcb_window_t window) {
  constexpr Seconds moment = 0.5;
  const std::lock_guard lock(mutex_);
  if (keysClaimedFor_ == window && !hasPassed(claimStandsUntil_)) return false;
  keysClaimedFor_ = window;
  claimStandsUntil_ = deadlineIn(moment);
  return true;
}

void X11Server::setHidden(ProcessID pid, bool isHidden) {
  const std::lock_guard lock(mutex_);
  if (isHidden)
    hidden_.insert(pid);
  else
    hidden_.erase(pid);
}

bool X11Server::isHidden(ProcessID pid) const {
  const std::lock_guard lock(mutex_);
  return hidden_.contains(pid);
}

void X11Server::forgetApplication(ProcessID pid) {
  const std::lock_guard lock(mutex_);
  frontWindows_.erase(pid);
  hidden_.erase(pid);
}

}  // namespace pellow
