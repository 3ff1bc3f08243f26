#include "platforms/simulated/simulated_desktop.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platforms/simulated/simulated_image.h"
#include "platforms/simulated/simulated_platform.h"

namespace pellow::simulated {

SimulatedDesktop::SimulatedDesktop(SimulatedPlatform& platform)
    : platform_(platform), system_(platform.system_) {}

// Time

Seconds SimulatedDesktop::now() const { return system_.scheduler.now(); }
void SimulatedDesktop::runUntilQuiet(Seconds horizon) { system_.mainLoop.runUntilQuiet(horizon); }
void SimulatedDesktop::run(Seconds duration) { system_.mainLoop.run(duration); }
void SimulatedDesktop::after(Seconds delay, std::function<void()> happening) {
  system_.scheduler.happenAt(now() + delay, std::move(happening));
}

// Applications and windows

SimulatedApplication SimulatedDesktop::launch(std::string name, std::optional<std::string> bundleID,
                                              ActivationPolicy policy) {
  const Image icon(std::make_shared<SimulatedImage>(name, Size{32, 32}));
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

SimulatedApplication SimulatedDesktop::application(std::string_view name) {
  for (const auto& each : system_.state.applications)
    if (each.identity.localizedName == name) return {system_, each.identity.pid};
  throw std::out_of_range(fmt::format("no application \"{}\"", name));
}

SimulatedWindow SimulatedDesktop::window(std::string_view title) {
  const auto& windows = system_.state.windows;
  const auto found = std::ranges::find(windows, title, &WindowState::title);
  if (found == windows.end()) throw std::out_of_range(fmt::format("no window \"{}\"", title));
  return {system_, found->id};
}

SimulatedWindow SimulatedDesktop::counterpart(const SimulatedWindow& window) {
  return {system_, window.id()};
}

std::vector<SimulatedWindow> SimulatedDesktop::windows() {
  std::vector<SimulatedWindow> windows;
  for (const auto& each : system_.state.windows) windows.emplace_back(system_, each.id);
  return windows;
}

std::optional<SimulatedApplication> SimulatedDesktop::frontmostApplication() {
  if (!system_.state.frontmost) return std::nullopt;
  return SimulatedApplication(system_, *system_.state.frontmost);
}

// Displays

const std::vector<Screen>& SimulatedDesktop::screens() const { return system_.state.screens; }

void SimulatedDesktop::plug(DisplayID display, AppKitRect frame) {
  system_.changeScreens([&](DesktopState& state) { state.plug(makeScreen(display, frame)); });
}

void SimulatedDesktop::unplug(DisplayID display) {
  system_.changeScreens([&](DesktopState& state) { state.unplug(display); });
}

void SimulatedDesktop::moveDock(DockSide side) {
  system_.changeScreens([&](DesktopState& state) { state.moveDock(side); });
}

void SimulatedDesktop::setVisibleFrame(DisplayID display, AppKitRect visibleFrame) {
  system_.changeScreens([&](DesktopState& state) {
    for (auto& screen : state.screens)
      if (screen.displayID == display) screen.visibleFrame = visibleFrame;
  });
}

// The user

void SimulatedDesktop::press(std::uint16_t keyCode, std::uint64_t modifierFlags,
                             std::string characters) {
  platform_.eventMonitors_.press(keyCode, modifierFlags, std::move(characters));
}

void SimulatedDesktop::setProgramHasKeyboard(bool has) {
  platform_.eventMonitors_.setProgramHasKeyboard(has);
}

void SimulatedDesktop::movePointer(AppKitPoint to) { platform_.pointer_.move(to); }

void SimulatedDesktop::pressPointer(AppKitPoint at) {
  movePointer(at);
  platform_.pointer_.press();
}

void SimulatedDesktop::releasePointer() { platform_.pointer_.release(); }

void SimulatedDesktop::click(AppKitPoint at) {
  pressPointer(at);
  releasePointer();
}

void SimulatedDesktop::drag(AppKitPoint from, AppKitPoint to, int steps) {
  pressPointer(from);
  const auto way = to - from;
  for (int step = 1; step <= steps; ++step)
    movePointer(from + AppKitVector{way.dx * step / steps, way.dy * step / steps});
  releasePointer();
}

void SimulatedDesktop::secondaryClick(AppKitPoint at) {
  movePointer(at);
  platform_.pointer_.secondaryClick();
}

void SimulatedDesktop::clickView(const std::string& panelName, const std::string& path) {
  const auto isThere = std::ranges::any_of(panels(panelName), [&](const auto* each) {
    const auto* view = each->view(path);
    return view && view->actions.onClick;
  });
  if (!isThere)
    throw std::out_of_range(fmt::format("nothing to click at \"{}\" in {}", path, panelName));
  system_.mainLoop.post([this, panelName, path] { platform_.panels_.clickView(panelName, path); });
}

std::vector<const SimulatedPanel*> SimulatedDesktop::panels(std::string_view name) const {
  return platform_.panels_.visible(name);
}

const SimulatedPanel& SimulatedDesktop::panel(std::string_view name) const {
  const auto found = panels(name);
  if (found.size() != 1)
    throw std::out_of_range(fmt::format("{} panels {} show", found.size(), name));
  return *found.front();
}

bool SimulatedDesktop::menuIsOpen() const { return openMenu().isOpen(); }
void SimulatedDesktop::closeMenu() { openMenu().close(); }
SimulatedMenu& SimulatedDesktop::openMenu() const { return platform_.menu_; }

std::vector<Alert> SimulatedDesktop::alerts() const { return platform_.alerts_.showing(); }
void SimulatedDesktop::choose(std::string_view button) { platform_.alerts_.choose(button); }

SimulatedFormWindow& SimulatedDesktop::formWindow(std::string_view name) const {
  return platform_.formWindows_.window(name);
}

const SimulatedStatusItem& SimulatedDesktop::statusItem() const {
  return platform_.statusBar_.item();
}
void SimulatedDesktop::openStatusMenu() { platform_.statusBar_.openMenu(); }

bool SimulatedDesktop::colourPanelIsOpen() const { return platform_.colourPanel_.isVisible(); }
Colour SimulatedDesktop::shownColour() const { return platform_.colourPanel_.colour(); }
void SimulatedDesktop::pickColour(Colour colour) { platform_.colourPanel_.pick(colour); }
void SimulatedDesktop::closeColourPanel() { platform_.colourPanel_.close(); }

// The system around the program

const std::vector<std::string>& SimulatedDesktop::openedURLs() const {
  return system_.state.openedURLs;
}
void SimulatedDesktop::refuseURLs(bool refuses) { system_.state.refusesURLs = refuses; }

bool SimulatedDesktop::startsAtLogin() const { return system_.state.startsAtLogin; }
void SimulatedDesktop::setStartsAtLogin(bool starts) { system_.state.startsAtLogin = starts; }

void SimulatedDesktop::publishUpdate(std::string version) {
  system_.state.updates.published = std::move(version);
}
void SimulatedDesktop::scheduledUpdateCheck() { platform_.updateFramework_.checkBySchedule(); }
std::optional<std::string> SimulatedDesktop::updateWindow() const {
  return platform_.updateFramework_.windowText();
}
void SimulatedDesktop::closeUpdateWindow() { platform_.updateFramework_.closeWindow(); }
void SimulatedDesktop::installUpdate() { platform_.updateFramework_.install(); }
void SimulatedDesktop::setProgramVersion(std::optional<std::string> version) {
  system_.state.updates.installed = std::move(version);
}

// User defaults and the log

void SimulatedDesktop::setDefault(std::string_view key, DefaultsValue value) {
  system_.state.defaults.put(key, std::move(value));
}

std::optional<DefaultsValue> SimulatedDesktop::storedDefault(std::string_view key) const {
  return system_.state.defaults.value(key);
}

std::optional<DefaultsValue> SimulatedDesktop::defaultAfterCrash(std::string_view key) const {
  return system_.state.defaults.afterCrash(key, now());
}

void SimulatedDesktop::setSymbolicHotKeys(std::vector<SymbolicHotKey> hotKeys) {
  system_.state.symbolicHotKeys = std::move(hotKeys);
}

const std::vector<LogLine>& SimulatedDesktop::log() const { return system_.state.log; }

bool SimulatedDesktop::hasLogged(std::string_view message) const {
  return std::ranges::find(log(), message, &LogLine::message) != log().end();
}

// Faults

void SimulatedDesktop::failNext(std::string name, AXError error, std::optional<AXCall> call) {
  system_.state.faults.push_back({std::move(name), call, error, true});
}

void SimulatedDesktop::failNextDefaultsWrite(SystemError error, std::optional<std::string> key) {
  system_.state.defaults.failNextWrite(std::move(key), std::move(error));
}

void SimulatedDesktop::delayAnswers(Seconds longest) { system_.state.longestExtraDelay = longest; }
void SimulatedDesktop::delayAnnouncements(Seconds longest) {
  system_.state.longestAnnouncement = longest;
}
void SimulatedDesktop::injectFaults(double probability, std::vector<AXError> errors) {
  system_.state.faultProbability = probability;
  system_.state.possibleFaults = std::move(errors);
}
void SimulatedDesktop::setTrusted(bool trusted) { system_.state.trustsProcess = trusted; }
void SimulatedDesktop::ignoreActivations(bool ignores) {
  system_.state.ignoresActivations = ignores;
}

void SimulatedDesktop::allowCapture(bool allowed) { system_.state.allowsCapture = allowed; }
int SimulatedDesktop::trustPrompts() const { return system_.state.trustPrompts; }
int SimulatedDesktop::captureAccessRequests() const { return system_.state.captureRequests; }
void SimulatedDesktop::capturesAfter(Seconds delay) { system_.state.captureDelay = delay; }
void SimulatedDesktop::failNextCapture(SystemError error, std::optional<CaptureCall> call) {
  system_.state.captureFaults.push_back({call, std::move(error)});
}
void SimulatedDesktop::failNextLoginItemChange(SystemError error) {
  system_.state.loginItemFault = std::move(error);
}
void SimulatedDesktop::allowMonitors(bool allowed) { system_.state.allowsMonitors = allowed; }

// The process

void SimulatedDesktop::signal(TerminationSignal signal) { platform_.process_.receive(signal); }
void SimulatedDesktop::killProcess() { system_.kill(); }
bool SimulatedDesktop::processRuns() const { return system_.processRuns(); }
std::optional<int> SimulatedDesktop::exitStatus() const { return system_.exitStatus(); }
void SimulatedDesktop::onTerminate(std::function<void()> handler) {
  platform_.process_.onTerminate(std::move(handler));
}
bool SimulatedDesktop::isAccessory() const {
  const auto* self = system_.state.application(system_.ownPid());
  return self && self->identity.activationPolicy == ActivationPolicy::accessory;
}
int SimulatedDesktop::launchedInstances() const { return platform_.process_.launchedInstances(); }
void SimulatedDesktop::failNextLaunch(SystemError error) {
  platform_.process_.failNextLaunch(std::move(error));
}

// Crashes

std::uint64_t SimulatedDesktop::portCalls() const { return system_.portCalls; }
DesktopState SimulatedDesktop::snapshot() const { return system_.snapshot(); }
const DesktopState& SimulatedDesktop::state() const { return system_.state; }
void SimulatedDesktop::crashAtPortCall(std::uint64_t call) {
  system_.crash = std::nullopt;
  system_.crashAtPortCall = system_.portCalls + call;
}
const std::optional<DesktopState>& SimulatedDesktop::crash() const { return system_.crash; }
void SimulatedDesktop::onPortCall(std::function<void(std::uint64_t)> observer) {
  system_.onPortCall = std::move(observer);
}
void SimulatedDesktop::recordHistory() { system_.recordsHistory = true; }
const std::vector<std::string>& SimulatedDesktop::history() const { return system_.history; }

}  // namespace pellow::simulated
