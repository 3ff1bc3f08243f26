#include "platforms/simulated/platform.h"

#include <utility>

namespace pellow::simulated {
namespace {

DesktopState freshDesktop() {
  DesktopState desktop;
  desktop.plug(makeScreen(1, {0, 0, 1440, 900}));
  desktop.pointer = {720, 450};
  return desktop;
}

}  // namespace

Platform::Platform(Options options) : Platform(freshDesktop(), std::move(options)) {}

Platform::Platform(DesktopState left, Options options)
    : system_(std::move(left), options.seed),
      accessibility_(system_, panels_),
      alerts_(system_),
      clock_(system_),
      colourPanel_(system_),
      eventMonitors_(system_),
      formWindows_(system_),
      log_([this](LogLevel level, std::string_view message) {
        if (system_.processRuns())
          system_.state.log.push_back({system_.scheduler.now(), level, std::string(message)});
      }),
      loginItem_(system_),
      menu_(system_),
      panels_(system_),
      pointer_(system_, eventMonitors_, panels_, menu_),
      process_(system_, std::move(options.arguments)),
      queues_(system_),
      screenCapture_(system_),
      screens_(system_),
      statusBar_(system_, menu_),
      symbolicHotKeys_(system_),
      updateFramework_(system_, process_),
      userDefaults_(system_),
      uuidSource_(system_),
      workspace_(system_),
      desktop_(*this) {}

}  // namespace pellow::simulated
