#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

SimulatedSystem::SimulatedSystem(DesktopState desktop, std::uint64_t seed)
    : state(std::move(desktop)), scheduler(seed, state.time), mainLoop(scheduler) {
  ownPid_ = state.launch({.bundleID = "com.velloway.pellow",
                          .localizedName = "Pellow",
                          .activationPolicy = ActivationPolicy::prohibited});
  for (const auto& late : state.lateWrites) scheduleLateWrite(late);
}

bool SimulatedSystem::beginPortCall(std::string what) {
  if (!processRuns_) return false;
  ++portCalls;
  if (recordsHistory)
    history.push_back(
        fmt::format("{:.6f} {}: {}", scheduler.now(), scheduler.runningThread(), what));
  if (portCalls == crashAtPortCall) crash = snapshot();
  if (onPortCall) onPortCall(portCalls);
  scheduler.mayWait();
  return processRuns_;
}

DesktopState SimulatedSystem::snapshot() const {
  auto left = state;
  left.time = scheduler.now();
  left.defaults.loseUnsaved(left.time);
  left.endApplication(ownPid_);
  return left;
}

void SimulatedSystem::exit(int status) {
  if (!processRuns_) return;
  exitStatus_ = status;
  state.defaults.saveAll();
  endProcess();
}

void SimulatedSystem::kill() {
  if (!processRuns_) return;
  state.defaults.loseUnsaved(scheduler.now());
  endProcess();
}

void SimulatedSystem::endProcess() {
  processRuns_ = false;
  mainLoop.stop();
  state.endApplication(ownPid_);
}

void SimulatedSystem::writeLate(Seconds after, WindowID window, std::string_view attribute,
                                const AXValue& value) {
  state.lateWrites.push_back({scheduler.now() + after, window, std::string(attribute), value});
  scheduleLateWrite(state.lateWrites.back());
}

void SimulatedSystem::scheduleLateWrite(const LateWrite& late) {
  scheduler.happenAt(late.moment, [this] { state.carryOutLateWrites(scheduler.now()); });
}

void SimulatedSystem::closeWindow(WindowID window) {
  state.close(window);
  announceDestroyed(window);
}

void SimulatedSystem::endApplication(ProcessID pid) {
  const auto windows = state.windowsOf(pid);
  state.endApplication(pid);
  for (const auto window : windows) announceDestroyed(window);
  mainLoop.post([this, pid] { applicationTerminated.notify(pid); });
}

void SimulatedSystem::announceDestroyed(WindowID window) {
  if (!windowDestroyed.contains(window)) return;
  mainLoop.post([this, window] { windowDestroyed.at(window).notify(); });
}

void SimulatedSystem::changeScreens(const std::function<void(DesktopState&)>& change) {
  change(state);
  mainLoop.post([this] { screensChanged.notify(); });
}

}  // namespace pellow::simulated
