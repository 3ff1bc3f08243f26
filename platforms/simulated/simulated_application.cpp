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
  return {*system_, system_->state.open({.pid = state().identity.pid,
                                         .title = std::move(title),
                                         .frame = frame,
                                         .subrole = std::move(subrole)})};
}

void SimulatedApplication::activate() const { system_->state.activate(state().identity.pid); }
void SimulatedApplication::hide() const { system_->state.hide(state().identity.pid); }
void SimulatedApplication::unhide() const { system_->state.unhide(state().identity.pid); }
void SimulatedApplication::quit() const { system_->endApplication(state().identity.pid); }

SimulatedApplication SimulatedApplication::answersAfter(Seconds delay) const {
  state().answersAfter = delay;
  return *this;
}

SimulatedApplication SimulatedApplication::refusesToHide(bool refuses) const {
  state().refusesToHide = refuses;
  return *this;
}

}  // namespace pellow::simulated
