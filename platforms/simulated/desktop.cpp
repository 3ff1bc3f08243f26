#include "platforms/simulated/desktop.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

#include "platforms/simulated/named_image.h"

namespace pellow::simulated {
namespace {

DesktopState freshDesktop() {
  DesktopState desktop;
  desktop.plug(makeScreen(1, {0, 0, 1440, 900}));
  desktop.pointer = {720, 450};
  return desktop;
}

}  // namespace

Desktop::Desktop(Options options) : Desktop(freshDesktop(), options) {}

Desktop::Desktop(DesktopState left, Options options)
    : system_(std::move(left), options.seed),
      accessibility_(system_, panels_),
      alerts_(system_),
      clock_(system_),
      colourPanel_(system_),
      eventMonitors_(system_),
      formWindows_(system_),
      keyboard_(system_, eventMonitors_),
      log_([this](LogLevel level, std::string_view message) {
        if (system_.processRuns())
          system_.state.log.push_back({system_.scheduler.now(), level, std::string(message)});
      }),
      loginItem_(system_),
      menu_(system_),
      panels_(system_),
      pointer_(system_, eventMonitors_, panels_, menu_),
      probeWindows_(system_),
      process_(system_),
      queues_(system_),
      screenCapture_(system_),
      screens_(system_),
      statusBar_(system_, menu_),
      symbolicHotKeys_(system_),
      updateFramework_(system_, process_),
      userDefaults_(system_),
      uuidSource_(system_),
      workspace_(system_) {}

void Desktop::after(Seconds delay, std::function<void()> happening) {
  system_.scheduler.happenAt(now() + delay, std::move(happening));
}

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

std::vector<Window> Desktop::windows() {
  std::vector<Window> windows;
  for (const auto& each : system_.state.windows) windows.emplace_back(system_, each.id);
  return windows;
}

bool Desktop::hasLogged(std::string_view message) const {
  return std::ranges::find(logged(), message, &LogLine::message) != logged().end();
}

void Desktop::onPortCall(std::function<void(std::uint64_t)> observer) {
  system_.onPortCall = std::move(observer);
}

}  // namespace pellow::simulated
