#include "platforms/linux/x11/x11_desktop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <xcb/randr.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "platforms/linux/x11/errands.h"
#include "platforms/linux/x11/grabs.h"
#include "platforms/linux/x11/instance_lock.h"
#include "platforms/linux/x11/keyboard.h"
#include "platforms/linux/x11/parking_guard.h"
#include "platforms/linux/x11/server_hold.h"
#include "platforms/linux/x11/window_manager.h"
#include "platforms/linux/x11/x11_element.h"
#include "platforms/linux/x11/x11_event_monitors.h"
#include "platforms/linux/x11/x11_screen_capture.h"
#include "platforms/linux/x11/x11_screens.h"
#include "platforms/linux/x11/x11_server.h"
#include "platforms/linux/x11/x11_symbolic_hot_keys.h"
#include "platforms/linux/x11/x11_workspace.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {

namespace {

FileDescriptor pollSetOf(std::initializer_list<int> descriptors) {
  FileDescriptor pollSet(epoll_create1(EPOLL_CLOEXEC));
  for (const int descriptor : descriptors) {
    epoll_event interest{.events = EPOLLIN, .data = {.fd = descriptor}};
    epoll_ctl(pollSet.number(), EPOLL_CTL_ADD, descriptor, &interest);
  }
  return pollSet;
}

// Answers the first event number of RandR, where it exists.
std::optional<std::uint8_t> listenToScreen(X11Connection& connection, int eventSignal) {
  connection.setEventSignal(eventSignal);
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection.raw(), connection.root(), XCB_CW_EVENT_MASK, &mask);
  const auto* extension = xcb_get_extension_data(connection.raw(), &xcb_randr_id);
  const bool hasRandR = extension && extension->present;
  if (hasRandR)
    xcb_randr_select_input(connection.raw(), connection.root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
  connection.flush();
  return hasRandR ? std::optional(extension->first_event) : std::nullopt;
}

SystemError noWindowManager(const std::string& displayName, const X11Server& server) {
  const auto display = displayName.empty() ? "" : " \"" + displayName + "\"";
  if (const auto lacks = server.windowManagerLacks(); !lacks.empty())
    return {fmt::format(
        "The window manager of the X display{} lacks {}, without which no window can be put away; "
        "openbox, KWin and mutter, among others, have it.",
        display, fmt::join(lacks, ", "))};
  return {
      fmt::format("No window manager that follows EWMH runs on the X display{}; start one, for "
                  "example openbox, and then Pellow.",
                  display)};
}

}  // namespace

// The events come over a connection of their own, so that the calls of the main thread neither meet
// nor delay them.
struct X11Desktop::Parts {
  Parts(std::unique_ptr<X11Server> x11Server, std::unique_ptr<X11Connection> eventConnection,
        std::unique_ptr<X11Connection> keyboardConnection, double scale, Hooks hooks,
        const Log& desktopLog)
      : log(desktopLog),
        server(std::move(x11Server)),
        events(std::move(eventConnection)),
        eventSignal(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
        pollSet(pollSetOf({xcb_get_file_descriptor(events->raw()), eventSignal.number()})),
        randrEvent(listenToScreen(*events, eventSignal.number())),
        hold(*events),
        instanceLock(*events),
        grabs(*server),
        windowManager(*server),
        windowEvents(*server, *events),
        parkingGuard(*server, windowManager.parkedFrames()),
        activeWindow(*server, windowEvents),
        errands(eventSignal.number()),
        accessibility(*server, windowManager, windowEvents, activeWindow, errands),
        screens(*server, *events, windowEvents, grabs, scale),
        workspace(*server, windowManager.foreground(), windowManager.iconifier(), windowEvents,
                  activeWindow, pollSet.number(), std::move(hooks.loadIcon)),
        keyboard(*server, std::move(keyboardConnection)),
        eventMonitors(*server, *events, keyboard, grabs, pollSet.number(),
                      std::move(hooks.ownWindowHasKeyboard)),
        symbolicHotKeys(keyboard, grabs, [this, shortcuts = std::move(hooks.shortcuts)] {
          return shortcuts ? shortcuts(server->windowManager().name)
                           : std::vector<DesktopShortcut>();
        }) {}

  void handle(const xcb_generic_event_t& event);
  void handleRootProperty(xcb_atom_t property);
  void actOnChanges();
  // Keeps the flag for a later round if the server falls silent meanwhile.
  void react(bool& flag, const std::function<void()>& act);

  const Log& log;
  std::unique_ptr<X11Server> server;
  std::unique_ptr<X11Connection> events;
  FileDescriptor eventSignal;
  FileDescriptor pollSet;
  std::optional<std::uint8_t> randrEvent;
  ServerHold hold;
  InstanceLock instanceLock;
  Grabs grabs;
  WindowManager windowManager;
  WindowEvents windowEvents;
  ParkingGuard parkingGuard;
  ActiveWindow activeWindow;
  Errands errands;
  X11Accessibility accessibility;
  X11Screens screens;
  X11Workspace workspace;
  Keyboard keyboard;
  X11EventMonitors eventMonitors;
  X11SymbolicHotKeys symbolicHotKeys;

  // What one round of events has touched; many events make one reaction.
  bool windowsChanged = false;
  bool activeWindowChanged = false;
  bool currentDesktopChanged = false;
  bool screensChanged = false;
  bool windowManagerChanged = false;
  // What other threads asked to observe, while the server fell silent.
  bool observersOutdated = false;
};

// What it says of itself is in several properties, and the last need not be one of the root window.
void X11Desktop::awaitWindowManager(const std::string& displayName, Seconds patience,
                                    const Log& log) {
  constexpr Seconds lookEvery = 0.2;
  const Deadline deadline = deadlineIn(patience);
  const auto server = X11Server::open(displayName);
  if (!server || (*server)->readWindowManager()) return;
  log.standard("Waiting for a window manager");
  auto& connection = (*server)->connection();
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(connection.raw(), connection.root(), XCB_CW_EVENT_MASK, &mask);
  while (!hasPassed(deadline) && !connection.isLost() && !(*server)->readWindowManager())
    (void)connection.waitForEvent(deadline.orIn(lookEvery));
}

std::expected<std::unique_ptr<X11Desktop>, SystemError> X11Desktop::open(
    const std::string& displayName, double scale, Hooks hooks, const Log& log) {
  auto server = X11Server::open(displayName);
  if (!server) return std::unexpected(server.error());
  auto events = X11Connection::open(displayName);
  if (!events) return std::unexpected(events.error());
  auto keyboard = X11Connection::open(displayName);
  if (!keyboard) return std::unexpected(keyboard.error());
  if (!(*server)->readWindowManager())
    return std::unexpected(noWindowManager(displayName, **server));
  (*server)->settleWindowManager(deadlineIn(serverPatience));
  return std::unique_ptr<X11Desktop>(new X11Desktop(std::make_unique<Parts>(
      std::move(*server), std::move(*events), std::move(*keyboard), scale, std::move(hooks), log)));
}

X11Desktop::X11Desktop(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

X11Desktop::~X11Desktop() = default;

Accessibility& X11Desktop::accessibility() { return parts_->accessibility; }
Workspace& X11Desktop::workspace() { return parts_->workspace; }
Screens& X11Desktop::screens() { return parts_->screens; }
EventMonitors& X11Desktop::eventMonitors() { return parts_->eventMonitors; }
SymbolicHotKeys& X11Desktop::symbolicHotKeys() { return parts_->symbolicHotKeys; }

std::vector<PixelRect> X11Desktop::panels() const {
  std::vector<PixelRect> panels;
  for (const auto& [id, frame, visible] : parts_->server->layout().monitors)
    std::ranges::copy_if(frame.around(visible), std::back_inserter(panels),
                         [](const PixelRect& part) { return part.area() > 0; });
  return panels;
}

bool X11Desktop::stretchesDocks() const { return parts_->server->windowManager().stretchesDocks; }

void X11Desktop::setPatient(bool isPatient) {
  parts_->server->setHold(isPatient ? nullptr : &parts_->hold);
  if (isPatient) parts_->workspace.catchUp();
}

bool X11Desktop::serverAnswers() { return parts_->server->answers(); }

void X11Desktop::setScale(double scale) { parts_->screens.setScale(scale); }

std::unique_ptr<ScreenCapture> X11Desktop::makeScreenCapture(Queues& queues) {
  return std::make_unique<X11ScreenCapture>(*parts_->server, queues);
}

int X11Desktop::fileDescriptor() const { return parts_->pollSet.number(); }

bool X11Desktop::processEvents() {
  eventfd_t signals = 0;
  eventfd_read(parts_->eventSignal.number(), &signals);
  if (!parts_->hold.isOn()) {
    const Deadline deadline = parts_->server->patience();
    parts_->errands.run();
    parts_->observersOutdated |= deadline.hasMetSilence();
  }
  while (const auto event = parts_->events->pollForEvent()) parts_->handle(*event);
  parts_->workspace.catchUp();
  parts_->actOnChanges();
  parts_->workspace.processEnded();
  parts_->eventMonitors.dispatch();
  parts_->events->flush();
  return !parts_->events->isLost();
}

void X11Desktop::Parts::handle(const xcb_generic_event_t& event) {
  const auto type = event.response_type & 0x7f;
  if (type == 0) {
    // A window went away while something was asked of it.
    const auto& error = reinterpret_cast<const xcb_generic_error_t&>(event);
    if (error.error_code != XCB_WINDOW)
      log.warning("The X server refused request {}.{} with error {}", error.major_code,
                  error.minor_code, error.error_code);
    return;
  }
  if (eventMonitors.handle(event)) return;
  windowEvents.handle(event);
  parkingGuard.handle(event);
  if (type == XCB_PROPERTY_NOTIFY) {
    const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (property.window == events->root()) handleRootProperty(property.atom);
  } else if (type == XCB_CONFIGURE_NOTIFY) {
    const auto& configure = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    if (configure.window == events->root()) screensChanged = true;
  } else if (randrEvent && (type == *randrEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                            type == *randrEvent + XCB_RANDR_NOTIFY)) {
    screensChanged = true;
  }
}

void X11Desktop::Parts::handleRootProperty(xcb_atom_t property) {
  const auto& atoms = server->atoms();
  if (property == atoms.netClientList) {
    windowsChanged = screensChanged = true;
    server->setOwners({});
  }
  if (property == atoms.netWorkarea || property == atoms.netCurrentDesktop) screensChanged = true;
  if (property == atoms.netCurrentDesktop) currentDesktopChanged = true;
  if (property == atoms.netActiveWindow) activeWindowChanged = true;
  if (property == atoms.netSupported || property == atoms.netSupportingWMCheck)
    windowManagerChanged = true;
  // It may have the same numbers as the one before.
  if (property == atoms.netSupportingWMCheck) server->unsettleWindowManager();
}

void X11Desktop::Parts::react(bool& flag, const std::function<void()>& act) {
  if (!std::exchange(flag, false)) return;
  const Deadline deadline = server->patience();
  act();
  flag |= deadline.hasMetSilence();
}

void X11Desktop::Parts::actOnChanges() {
  if (events->isLost() || hold.isOn()) return;
  const Deadline deadline = server->patience();
  react(windowManagerChanged, [this] { server->readWindowManager(); });
  if (windowsChanged && server->settleWindowManager(deadline)) {
    windowEvents.noteAll();
    parkingGuard.arrangementBegins();
  }
  if (deadline.hasMetSilence()) return;
  screensChanged |= screens.isOutdated();
  react(screensChanged, [this] {
    if (screens.refresh()) parkingGuard.arrangementBegins();
  });
  if (std::exchange(currentDesktopChanged, false)) workspace.currentDesktopChanged();
  windowEvents.dispatch();
  parkingGuard.dispatch();
  react(windowsChanged, [this] {
    accessibility.windowsChanged();
    workspace.windowsChanged();
  });
  react(observersOutdated, [this] { accessibility.windowsChanged(); });
  react(activeWindowChanged, [this] { activeWindow.refresh(); });
}

SystemError X11Desktop::connectionError() const {
  return {"The connection to the X server is lost; Pellow ends with it."};
}

std::expected<void, SystemError> X11Desktop::claimInstance() {
  auto claimed = parts_->instanceLock.claim();
  if (claimed) parts_->windowManager.parking().finishInterruptedMoves();
  return claimed;
}

std::expected<void, SystemError> X11Desktop::waitForInstance(Seconds timeout) {
  auto claimed = parts_->instanceLock.wait(timeout);
  // The wait has taken in events that it had no use for.
  parts_->windowManagerChanged = parts_->screensChanged = true;
  parts_->windowsChanged = parts_->activeWindowChanged = true;
  parts_->actOnChanges();
  if (claimed) parts_->windowManager.parking().finishInterruptedMoves();
  return claimed;
}

bool X11Desktop::deliverLocalKeyDown(std::uint8_t keycode, std::uint16_t state) {
  return parts_->eventMonitors.deliverLocalKeyDown(keycode, state);
}

PixelRect X11Desktop::toPixels(const AppKitRect& rect) const {
  return parts_->server->layout().toPixels(rect);
}

AppKitRect X11Desktop::fromPixels(const PixelRect& rect) const {
  return parts_->server->layout().toAppKit(rect);
}

}  // namespace pellow
