#include "platforms/simulated/simulated_application.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/simulated_accessibility.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

ApplicationState& SimulatedApplication::state() const {
  if (auto* application = system_->state.application(pid_)) return *application;
  throw std::out_of_range(fmt::format("application {} does not run", pid_));
}

AXElement SimulatedApplication::element() const { return applicationElement(*system_, pid_); }

bool SimulatedApplication::isRunning() const { return system_->state.application(pid_) != nullptr; }
bool SimulatedApplication::isHidden() const { return state().hidden; }
std::optional<Actor> SimulatedApplication::hiddenBy() const { return state().hiddenBy; }
bool SimulatedApplication::isFrontmost() const { return system_->state.frontmost == pid_; }

std::vector<SimulatedWindow> SimulatedApplication::windows() const {
  std::vector<SimulatedWindow> windows;
  for (const auto id : system_->state.windowsOf(pid_)) windows.emplace_back(*system_, id);
  return windows;
}

std::optional<SimulatedWindow> SimulatedApplication::focusedWindow() const {
  const auto focused = state().focusedWindow;
  return focused ? std::optional(SimulatedWindow(*system_, *focused)) : std::nullopt;
}

SimulatedWindow SimulatedApplication::openWindow(std::string title, QuartzRect frame,
                                                 std::string subrole) const {
  WindowState window{.pid = state().identity.pid,
                     .title = std::move(title),
                     .frame = frame,
                     .subrole = std::move(subrole)};
  WindowID id = 0;
  system_->change([&](DesktopState& desktop) { id = desktop.open(std::move(window)); });
  return {*system_, id};
}

void SimulatedApplication::does(void (DesktopState::*verb)(ProcessID)) const {
  const auto pid = state().identity.pid;
  system_->change([&](DesktopState& desktop) { (desktop.*verb)(pid); });
}

void SimulatedApplication::becomes(ActivationPolicy policy) const {
  system_->change([pid = state().identity.pid, policy](DesktopState& desktop) {
    desktop.application(pid)->identity.activationPolicy = policy;
  });
}

void SimulatedApplication::activate() const { does(&DesktopState::activate); }
void SimulatedApplication::clickInDock() const { does(&DesktopState::reopen); }
void SimulatedApplication::hide() const { does(&DesktopState::hide); }
void SimulatedApplication::unhide() const { does(&DesktopState::unhide); }
void SimulatedApplication::quit() const { does(&DesktopState::endApplication); }
void SimulatedApplication::kill() const { system_->killApplication(state().identity.pid); }

SimulatedApplication SimulatedApplication::answersAfter(Seconds delay) const {
  state().answersAfter = delay;
  return *this;
}

SimulatedApplication SimulatedApplication::refusesToHide(bool refuses) const {
  state().refusesToHide = refuses;
  return *this;
}

SimulatedApplication SimulatedApplication::hidesAfter(Seconds delay) const {
  state().hidesAfter = delay;
  return *this;
}

SimulatedApplication SimulatedApplication::refusesObservers(bool refuses) const {
  state().refusesObservers = refuses;
  return *this;
}

SimulatedApplication SimulatedApplication::hangs() const {
  state().hangs = true;
  return *this;
}

void SimulatedApplication::wakes() const {
  const auto pid = state().identity.pid;
  const auto now = system_->scheduler.now();
  system_->change([&](DesktopState& desktop) { desktop.wake(pid, now); });
}

SimulatedApplication SimulatedApplication::quitsDuring(int call) const {
  state().callsUntilQuit = call;
  state().dies = false;
  return *this;
}

SimulatedApplication SimulatedApplication::diesDuring(int call) const {
  state().callsUntilQuit = call;
  state().dies = true;
  return *this;
}

}  // namespace pellow::simulated
