#include "platforms/simulated/desktop_state.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platforms/simulated/scheduler.h"

namespace pellow::simulated {
namespace {

constexpr double menuBarHeight = 25;
constexpr double dockThickness = 70;
constexpr double titleBarHeight = 28;

template <class Applications>
auto* findApplication(Applications& applications, ProcessID pid) {
  const auto found = std::ranges::find_if(
      applications, [&](const ApplicationState& each) { return each.identity.pid == pid; });
  return found == applications.end() ? nullptr : &*found;
}

template <class Windows>
auto* findWindow(Windows& windows, WindowID id) {
  const auto found = std::ranges::find(windows, id, &WindowState::id);
  return found == windows.end() ? nullptr : &*found;
}

}  // namespace

ApplicationState* DesktopState::application(ProcessID pid) {
  return findApplication(applications, pid);
}
const ApplicationState* DesktopState::application(ProcessID pid) const {
  return findApplication(applications, pid);
}
WindowState* DesktopState::window(WindowID id) { return findWindow(windows, id); }
const WindowState* DesktopState::window(WindowID id) const { return findWindow(windows, id); }

std::vector<WindowID> DesktopState::windowsOf(ProcessID pid) const {
  std::vector<WindowID> ids;
  for (const bool minimized : {false, true})
    for (const auto& each : windows)
      if (each.pid == pid && each.minimized == minimized) ids.push_back(each.id);
  return ids;
}

// The Dock is on all of them.
bool DesktopState::isOnOtherSpace(const WindowState& window) const {
  return !window.minimized && window.space != shownSpace;
}

bool DesktopState::isVisible(const WindowState& window) const {
  return !window.minimized && !isOnOtherSpace(window) && !application(window.pid)->hidden;
}

bool DesktopState::isOnScreen(const WindowState& window) const {
  return isVisible(window) && shareOnDisplays(window.frame) > 0;
}

std::optional<WindowID> DesktopState::windowAt(QuartzPoint point) const {
  for (const auto& each : windows)
    if (isVisible(each) && each.frame.contains(point)) return each.id;
  return std::nullopt;
}

QuartzRect DesktopState::centred(Size size) const {
  const auto* const screen = mainScreen();
  if (!screen) return {0, 0, size.width, size.height};
  const auto room = flip().toQuartz(screen->visibleFrame);
  return {room.midX() - size.width / 2, room.midY() - size.height / 2, size.width, size.height};
}

WindowPart DesktopState::partAt(const WindowState& window, QuartzPoint point) const {
  if (window.hasMinimizeButton && frameOf(WindowPart::minimizeButton, window.frame).contains(point))
    return WindowPart::minimizeButton;
  const auto content = frameOf(WindowPart::content, window.frame);
  return content.contains(point) ? WindowPart::content : WindowPart::window;
}

std::optional<WindowID> DesktopState::focusedWindow() const {
  return frontmost ? application(*frontmost)->focusedWindow : std::nullopt;
}

// Applications

ProcessID DesktopState::launch(RunningApplication identity) {
  identity.pid = ++lastPid;
  applications.push_back({.identity = std::move(identity)});
  return lastPid;
}

void DesktopState::endApplication(ProcessID pid) {
  std::erase_if(windows, [&](const WindowState& each) { return each.pid == pid; });
  std::erase_if(applications,
                [&](const ApplicationState& each) { return each.identity.pid == pid; });
  resign(pid);
}

void DesktopState::hide(ProcessID pid) {
  application(pid)->hidden = true;
  resign(pid);
}

void DesktopState::unhide(ProcessID pid) {
  auto& shown = *application(pid);
  shown.hidden = false;
  shown.isAskedToHide = false;
}

void DesktopState::activate(ProcessID pid) {
  unhide(pid);
  frontmost = pid;
  auto& focused = application(pid)->focusedWindow;
  if (!focused) focusNext(pid);
  if (focused) bringToFront(*focused);
}

void DesktopState::resign(ProcessID pid) {
  if (frontmost != pid) return;
  frontmost = std::nullopt;
  const auto takesOver = [&](ProcessID candidate) {
    const auto& next = *application(candidate);
    return candidate != pid && !next.hidden &&
           next.identity.activationPolicy == ActivationPolicy::regular;
  };
  for (const auto& each : windows)
    if (isVisible(each) && takesOver(each.pid)) return activate(each.pid);
  for (const auto& each : applications)
    if (takesOver(each.identity.pid)) return activate(each.identity.pid);
}

std::optional<SystemError> DesktopState::takeCaptureFault(CaptureCall call) {
  const auto found = std::ranges::find_if(
      captureFaults, [&](const CaptureFault& fault) { return !fault.call || fault.call == call; });
  if (found == captureFaults.end()) return std::nullopt;
  auto error = std::move(found->error);
  captureFaults.erase(found);
  return error;
}

// Windows

WindowID DesktopState::open(WindowState window) {
  window.id = ++lastWindow;
  window.space = shownSpace;
  const auto pid = window.pid;
  windows.insert(windows.begin(), std::move(window));
  auto& owner = *application(pid);
  owner.focusedWindow = lastWindow;
  if (owner.identity.activationPolicy == ActivationPolicy::regular) activate(pid);
  return lastWindow;
}

void DesktopState::close(WindowID id) {
  const auto pid = window(id)->pid;
  std::erase_if(windows, [&](const WindowState& each) { return each.id == id; });
  if (application(pid)->focusedWindow == id) focusNext(pid);
}

void DesktopState::minimize(WindowID id, Actor actor) {
  auto& minimized = *window(id);
  if (!minimized.minimized) minimized.minimizedBy = actor;
  minimized.minimized = true;
  if (application(minimized.pid)->focusedWindow == id) focusNext(minimized.pid);
}

void DesktopState::unminimize(WindowID id) {
  if (!window(id)->minimized) return;
  window(id)->minimized = false;
  window(id)->minimizedBy = std::nullopt;
  window(id)->space = shownSpace;
  raise(id);
}

void DesktopState::choose(WindowID id) {
  unminimize(id);
  raise(id);
  activate(window(id)->pid);
}

void DesktopState::raise(WindowID id) {
  const auto& raised = *window(id);
  if (!raised.minimized) application(raised.pid)->focusedWindow = id;
  bringToFront(id);
}

std::expected<void, AXError> DesktopState::write(WindowID id, std::string_view attribute,
                                                 const AXValue& value) {
  if (attribute == AX::attribute::position) {
    const auto* origin = std::get_if<QuartzPoint>(&value);
    if (!origin) return std::unexpected(AXError::illegalArgument);
    move(id, *origin);
  } else if (attribute == AX::attribute::size) {
    const auto* size = std::get_if<Size>(&value);
    if (!size) return std::unexpected(AXError::illegalArgument);
    window(id)->frame.size = *size;
  } else if (attribute == AX::attribute::minimized) {
    const auto* minimized = std::get_if<bool>(&value);
    if (!minimized) return std::unexpected(AXError::illegalArgument);
    *minimized ? minimize(id, Actor::program) : unminimize(id);
  } else {
    return std::unexpected(AXError::attributeUnsupported);
  }
  return {};
}

void DesktopState::carryOutLateWrites(Seconds now) {
  const auto isDue = [now](const LateWrite& late) { return late.moment <= now; };
  for (const auto& late : lateWrites) {
    if (!isDue(late) || !window(late.window)) continue;
    (void)write(late.window, late.attribute, late.value);
    ++window(late.window)->lateChanges;
  }
  std::erase_if(lateWrites, isDue);
}

void DesktopState::wake(ProcessID pid, Seconds now) {
  application(pid)->hangs = false;
  for (auto& late : lateWrites)
    if (late.moment == never && window(late.window) && window(late.window)->pid == pid)
      late.moment = now;
  carryOutLateWrites(now);
}

void DesktopState::move(WindowID id, QuartzPoint asked) {
  auto& moved = *window(id);
  moved.frame.origin = placeTaken(moved, asked);
}

QuartzPoint DesktopState::placeTaken(const WindowState& window, QuartzPoint asked) const {
  const auto& manners = window.manners;
  if (manners.refusesToMove) return window.frame.origin;
  auto place = manners.moves ? manners.moves(asked) : asked;
  if (manners.gridStep > 0) {
    place.x = std::round(place.x / manners.gridStep) * manners.gridStep;
    place.y = std::round(place.y / manners.gridStep) * manners.gridStep;
  }
  return manners.clampsToDisplay ? clamped({place, window.frame.size}) : place;
}

QuartzPoint DesktopState::clamped(const QuartzRect& frame) const {
  const auto* screen = screenOf(frame);
  if (!screen) return frame.origin;
  const auto room = flip().toQuartz(screen->visibleFrame);
  const auto last = [](double start, double end, double length) {
    return std::max(start, end - length);
  };
  return {std::clamp(frame.minX(), room.minX(), last(room.minX(), room.maxX(), frame.width())),
          std::clamp(frame.minY(), room.minY(), last(room.minY(), room.maxY(), frame.height()))};
}

void DesktopState::bringToFront(WindowID id) {
  const auto found = std::ranges::find(windows, id, &WindowState::id);
  const auto pid = found->pid;
  const auto front =
      frontmost == pid ? windows.begin() : std::ranges::find(windows, pid, &WindowState::pid);
  std::rotate(front, found, found + 1);
}

void DesktopState::focusNext(ProcessID pid) {
  auto& focused = application(pid)->focusedWindow;
  focused = std::nullopt;
  for (const auto& each : windows)
    if (each.pid == pid && !each.minimized) {
      focused = each.id;
      return;
    }
}

// Displays

Flip DesktopState::flip() const { return {screens.empty() ? 0 : screens.front().frame.height()}; }

QuartzPoint DesktopState::toQuartz(AppKitPoint point) const {
  return {point.x, flip().primaryHeight - point.y};
}
AppKitPoint DesktopState::toAppKit(QuartzPoint point) const {
  return {point.x, flip().primaryHeight - point.y};
}

const Screen* DesktopState::screenOf(const QuartzRect& rect) const {
  return screenWithMostOf(flip().toAppKit(rect), screens);
}

const Screen* DesktopState::mainScreen() const {
  if (screens.empty()) return nullptr;
  const auto focused = focusedWindow();
  return focused ? screenOf(window(*focused)->frame) : &screens.front();
}

void DesktopState::plug(Screen screen) {
  screens.push_back(std::move(screen));
  if (screens.size() > 1) return;
  beginAtPrimary();
  moveDock(dock);
}

void DesktopState::unplug(DisplayID display) {
  const auto before = flip();
  const bool wasPrimary = !screens.empty() && screens.front().displayID == display;
  std::erase_if(screens, [&](const Screen& screen) { return screen.displayID == display; });
  if (screens.empty()) return;
  const auto corner = before.toQuartz(screens.front().frame).origin;
  beginAtPrimary();
  if (wasPrimary) moveDock(dock);
  for (auto& each : windows) {
    each.frame.origin = each.frame.origin + (QuartzPoint{} - corner);
    if (shareOnDisplays(each.frame) == 0) each.frame.origin = clamped(each.frame);
  }
}

double DesktopState::shareOnDisplays(const QuartzRect& rect) const {
  double shown = 0;
  for (const auto& screen : screens) shown += screen.frame.intersectionArea(flip().toAppKit(rect));
  return rect.area() > 0 ? shown / rect.area() : 0;
}

// AppKit space begins at the primary display.
void DesktopState::beginAtPrimary() {
  const auto toOrigin = AppKitPoint{} - screens.front().frame.origin;
  for (auto& screen : screens) {
    screen.frame.origin = screen.frame.origin + toOrigin;
    screen.visibleFrame.origin = screen.visibleFrame.origin + toOrigin;
  }
  pointer = pointer + toOrigin;
}

void DesktopState::moveDock(DockSide side) {
  dock = side;
  if (screens.empty()) return;
  auto& primary = screens.front();
  primary.visibleFrame = makeScreen(0, primary.frame).visibleFrame;
  auto& room = primary.visibleFrame;
  if (side == DockSide::left) room.origin.x += dockThickness;
  if (side == DockSide::left || side == DockSide::right) room.size.width -= dockThickness;
  if (side == DockSide::bottom) {
    room.origin.y += dockThickness;
    room.size.height -= dockThickness;
  }
}

QuartzRect frameOf(WindowPart part, const QuartzRect& window) {
  switch (part) {
    case WindowPart::window:
      return window;
    case WindowPart::minimizeButton:
      return {window.minX() + 26, window.minY() + 4, 14, 14};
    case WindowPart::content:
      return {window.minX(), window.minY() + titleBarHeight, window.width(),
              std::max(window.height() - titleBarHeight, 0.0)};
  }
  return window;
}

Size sizeAround(Size content) { return {content.width, content.height + titleBarHeight}; }

Screen makeScreen(DisplayID display, AppKitRect frame) {
  return {display, frame,
          AppKitRect(frame.minX(), frame.minY(), frame.width(), frame.height() - menuBarHeight)};
}

}  // namespace pellow::simulated
