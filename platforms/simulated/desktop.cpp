#include "platforms/simulated/desktop.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platforms/simulated/named_image.h"
#include "platforms/simulated/platform.h"

namespace pellow::simulated {

Desktop::Desktop(Platform& platform) : platform_(platform), system_(platform.system_) {}

// Time

Seconds Desktop::now() const { return system_.scheduler.now(); }
void Desktop::runUntilQuiet(Seconds horizon) { system_.mainLoop.runUntilQuiet(horizon); }
void Desktop::run(Seconds duration) { system_.mainLoop.run(duration); }
void Desktop::after(Seconds delay, std::function<void()> happening) {
  system_.scheduler.happenAt(now() + delay, std::move(happening));
}

// Applications and windows

Application Desktop::launch(std::string name, std::optional<std::string> bundleID,
                            ActivationPolicy policy) {
  const Image icon(std::make_shared<NamedImage>(name, Size{32, 32}));
  RunningApplication identity{.bundleID = std::move(bundleID),
                              .localizedName = std::move(name),
                              .icon = icon,
                              .activationPolicy = policy};
  ProcessID pid = 0;
  system_.change([&](DesktopState& state) {
    pid = state.launch(std::move(identity));
    if (policy == ActivationPolicy::regular) state.activate(pid);
  });
  return {system_, pid};
}

Application Desktop::application(std::string_view name) {
  for (const auto& each : system_.state.applications)
    if (each.identity.localizedName == name) return {system_, each.identity.pid};
  throw std::out_of_range(fmt::format("no application \"{}\"", name));
}

Window Desktop::window(std::string_view title) {
  const auto& windows = system_.state.windows;
  const auto found = std::ranges::find(windows, title, &WindowState::title);
  if (found == windows.end()) throw std::out_of_range(fmt::format("no window \"{}\"", title));
  return {system_, found->id};
}

Window Desktop::counterpart(const Window& window) { return {system_, window.id()}; }

std::vector<Window> Desktop::windows() {
  std::vector<Window> windows;
  for (const auto& each : system_.state.windows) windows.emplace_back(system_, each.id);
  return windows;
}

std::optional<Application> Desktop::frontmostApplication() {
  if (!system_.state.frontmost) return std::nullopt;
  return Application(system_, *system_.state.frontmost);
}

// Displays

const std::vector<Screen>& Desktop::screens() const { return system_.state.screens; }

void Desktop::plug(DisplayID display, AppKitRect frame) {
  system_.changeScreens([&](DesktopState& state) { state.plug(makeScreen(display, frame)); });
}

void Desktop::unplug(DisplayID display) {
  system_.changeScreens([&](DesktopState& state) { state.unplug(display); });
}

void Desktop::moveDock(DockSide side) {
  system_.changeScreens([&](DesktopState& state) { state.moveDock(side); });
}

void Desktop::setVisibleFrame(DisplayID display, AppKitRect visibleFrame) {
  system_.changeScreens([&](DesktopState& state) {
    for (auto& screen : state.screens)
      if (screen.displayID == display) screen.visibleFrame = visibleFrame;
  });
}

// The user

void Desktop::press(std::uint16_t keyCode, std::uint64_t modifierFlags, std::string characters) {
  platform_.eventMonitors_.press(keyCode, modifierFlags, std::move(characters));
}

void Desktop::setProgramHasKeyboard(bool has) {
  platform_.eventMonitors_.setProgramHasKeyboard(has);
}

void Desktop::movePointer(AppKitPoint to) { platform_.pointer_.move(to); }

void Desktop::pressPointer(AppKitPoint at) {
  movePointer(at);
  platform_.pointer_.press();
}

void Desktop::releasePointer() { platform_.pointer_.release(); }

void Desktop::click(AppKitPoint at) {
  pressPointer(at);
  releasePointer();
}

void Desktop::drag(AppKitPoint from, AppKitPoint to, int steps) {
  pressPointer(from);
  const auto way = to - from;
  for (int step = 1; step <= steps; ++step)
    movePointer(from + AppKitVector{way.dx * step / steps, way.dy * step / steps});
  releasePointer();
}

void Desktop::secondaryClick(AppKitPoint at) {
  movePointer(at);
  platform_.pointer_.secondaryClick();
}

void Desktop::clickView(const std::string& panelName, const std::string& path) {
  const auto isThere = std::ranges::any_of(panels(panelName), [&](const auto* each) {
    const auto* view = each->view(path);
    return view && view->actions.onClick;
  });
  if (!isThere)
    throw std::out_of_range(fmt::format("nothing to click at \"{}\" in {}", path, panelName));
  system_.mainLoop.post([this, panelName, path] { platform_.panels_.clickView(panelName, path); });
}

std::vector<const Panel*> Desktop::panels(std::string_view name) const {
  return platform_.panels_.visible(name);
}

const Panel& Desktop::panel(std::string_view name) const {
  const auto found = panels(name);
  if (found.size() != 1)
    throw std::out_of_range(fmt::format("{} panels {} show", found.size(), name));
  return *found.front();
}

bool Desktop::menuIsOpen() const { return openMenu().isOpen(); }
void Desktop::closeMenu() { openMenu().close(); }
OpenMenu& Desktop::openMenu() const { return platform_.menu_; }

std::vector<Alert> Desktop::alerts() const { return platform_.alerts_.showing(); }
void Desktop::choose(std::string_view button) { platform_.alerts_.choose(button); }

FormWindow& Desktop::formWindow(std::string_view name) const {
  return platform_.formWindows_.window(name);
}

const StatusItem& Desktop::statusItem() const { return platform_.statusBar_.item(); }
void Desktop::openStatusMenu() { platform_.statusBar_.openMenu(); }

bool Desktop::colourPanelIsOpen() const { return platform_.colourPanel_.isVisible(); }
Colour Desktop::shownColour() const { return platform_.colourPanel_.colour(); }
void Desktop::pickColour(Colour colour) { platform_.colourPanel_.pick(colour); }
void Desktop::closeColourPanel() { platform_.colourPanel_.close(); }

// The system around the program

const std::vector<std::string>& Desktop::openedURLs() const { return system_.state.openedURLs; }
void Desktop::refuseURLs(bool refuses) { system_.state.refusesURLs = refuses; }

bool Desktop::startsAtLogin() const { return system_.state.startsAtLogin; }
void Desktop::setStartsAtLogin(bool starts) { system_.state.startsAtLogin = starts; }

void Desktop::publishUpdate(std::string version) {
  system_.state.updates.published = std::move(version);
}
void Desktop::scheduledUpdateCheck() { platform_.updateFramework_.checkBySchedule(); }
std::optional<std::string> Desktop::updateWindow() const {
  return platform_.updateFramework_.windowText();
}
void Desktop::closeUpdateWindow() { platform_.updateFramework_.closeWindow(); }
void Desktop::installUpdate() { platform_.updateFramework_.install(); }
void Desktop::setProgramVersion(std::optional<std::string> version) {
  system_.state.updates.installed = std::move(version);
}

// User defaults and the log

void Desktop::setDefault(std::string_view key, DefaultsValue value) {
  system_.state.defaults.put(key, std::move(value));
}

std::optional<DefaultsValue> Desktop::storedDefault(std::string_view key) const {
  return system_.state.defaults.value(key);
}

std::optional<DefaultsValue> Desktop::defaultOnDisk(std::string_view key) const {
  return system_.state.defaults.onDisk(key, now());
}

void Desktop::setSymbolicHotKeys(std::vector<SymbolicHotKey> hotKeys) {
  system_.state.symbolicHotKeys = std::move(hotKeys);
}

const std::vector<LogLine>& Desktop::log() const { return system_.state.log; }

bool Desktop::hasLogged(std::string_view message) const {
  return std::ranges::find(log(), message, &LogLine::message) != log().end();
}

// Faults

void Desktop::failNext(std::string name, AXError error, std::optional<AXCall> call) {
  system_.state.faults.push_back({std::move(name), call, error, true});
}

void Desktop::failNextDefaultsWrite(SystemError error, std::optional<std::string> key) {
  system_.state.defaults.failNextWrite(std::move(key), std::move(error));
}

void Desktop::delayAnswers(Seconds longest) { system_.state.longestExtraDelay = longest; }
void Desktop::delayAnnouncements(Seconds longest) { system_.state.longestAnnouncement = longest; }
void Desktop::injectFaults(double probability, std::vector<AXError> errors) {
  system_.state.faultProbability = probability;
  system_.state.possibleFaults = std::move(errors);
}
void Desktop::setTrusted(bool trusted) { system_.state.trustsProcess = trusted; }
void Desktop::allowCapture(bool allowed) { system_.state.allowsCapture = allowed; }
int Desktop::trustPrompts() const { return system_.state.trustPrompts; }
int Desktop::captureAccessRequests() const { return system_.state.captureRequests; }
void Desktop::capturesAfter(Seconds delay) { system_.state.captureDelay = delay; }
void Desktop::failNextCapture(SystemError error, std::optional<CaptureCall> call) {
  system_.state.captureFaults.push_back({call, std::move(error)});
}
void Desktop::failNextLoginItemChange(SystemError error) {
  system_.state.loginItemFault = std::move(error);
}
void Desktop::allowMonitors(bool allowed) { system_.state.allowsMonitors = allowed; }

// The process

void Desktop::signal(TerminationSignal signal) { platform_.process_.receive(signal); }
void Desktop::killProcess() { system_.kill(); }
bool Desktop::processRuns() const { return system_.processRuns(); }
std::optional<int> Desktop::exitStatus() const { return system_.exitStatus(); }
void Desktop::onTerminate(std::function<void()> handler) {
  platform_.process_.onTerminate(std::move(handler));
}
bool Desktop::isAccessory() const {
  const auto* self = system_.state.application(system_.ownPid());
  return self && self->identity.activationPolicy == ActivationPolicy::accessory;
}
int Desktop::launchedInstances() const { return platform_.process_.launchedInstances(); }
void Desktop::failNextLaunch(SystemError error) {
  platform_.process_.failNextLaunch(std::move(error));
}

// Crashes

std::uint64_t Desktop::portCalls() const { return system_.portCalls; }
DesktopState Desktop::snapshot() const { return system_.snapshot(); }
const DesktopState& Desktop::state() const { return system_.state; }
void Desktop::crashAtPortCall(std::uint64_t call) {
  system_.crash = std::nullopt;
  system_.crashAtPortCall = system_.portCalls + call;
}
const std::optional<DesktopState>& Desktop::crash() const { return system_.crash; }
void Desktop::onPortCall(std::function<void(std::uint64_t)> observer) {
  system_.onPortCall = std::move(observer);
}
void Desktop::recordHistory() { system_.recordsHistory = true; }
const std::vector<std::string>& Desktop::history() const { return system_.history; }

}  // namespace pellow::simulated
