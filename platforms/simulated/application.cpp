#include "platforms/simulated/application.h"

#include <stdexcept>
#include <utility>

#include "platforms/simulated/accessibility.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

ApplicationState& Application::state() const {
  if (auto* application = system_->state.application(pid_)) return *application;
  throw std::out_of_range(fmt::format("application {} does not run", pid_));
}

AXElement Application::element() const { return applicationElement(*system_, pid_); }

bool Application::isRunning() const { return system_->state.application(pid_) != nullptr; }
bool Application::isHidden() const { return state().hidden; }
bool Application::isFrontmost() const { return system_->state.frontmost == pid_; }

std::vector<Window> Application::windows() const {
  std::vector<Window> windows;
  for (const auto id : system_->state.windowsOf(pid_)) windows.emplace_back(*system_, id);
  return windows;
}

std::optional<Window> Application::focusedWindow() const {
  const auto focused = state().focusedWindow;
  return focused ? std::optional(Window(*system_, *focused)) : std::nullopt;
}

Window Application::openWindow(std::string title, QuartzRect frame, std::string subrole) const {
  WindowState window{.pid = state().identity.pid,
                     .title = std::move(title),
                     .frame = frame,
                     .subrole = std::move(subrole)};
  WindowID id = 0;
  system_->change([&](DesktopState& desktop) { id = desktop.open(std::move(window)); });
  return {*system_, id};
}

void Application::does(void (DesktopState::*verb)(ProcessID)) const {
  const auto pid = state().identity.pid;
  system_->change([&](DesktopState& desktop) { (desktop.*verb)(pid); });
}

void Application::becomes(ActivationPolicy policy) const {
  system_->change([pid = state().identity.pid, policy](DesktopState& desktop) {
    desktop.application(pid)->identity.activationPolicy = policy;
  });
}

void Application::activate() const { does(&DesktopState::activate); }
void Application::hide() const { does(&DesktopState::hide); }
void Application::unhide() const { does(&DesktopState::unhide); }
void Application::quit() const { does(&DesktopState::endApplication); }
void Application::kill() const { system_->killApplication(state().identity.pid); }

Application Application::answersAfter(Seconds delay) const {
  state().answersAfter = delay;
  return *this;
}

Application Application::refusesToHide(bool refuses) const {
  state().refusesToHide = refuses;
  return *this;
}

Application Application::hidesAfter(Seconds delay) const {
  state().hidesAfter = delay;
  return *this;
}

Application Application::refusesObservers(bool refuses) const {
  state().refusesObservers = refuses;
  return *this;
}

Application Application::hangs() const {
  state().hangs = true;
  return *this;
}

void Application::wakes() const {
  const auto pid = state().identity.pid;
  const auto now = system_->scheduler.now();
  system_->change([&](DesktopState& desktop) { desktop.wake(pid, now); });
}

Application Application::quitsDuring(int call) const {
  state().callsUntilQuit = call;
  return *this;
}

}  // namespace pellow::simulated
