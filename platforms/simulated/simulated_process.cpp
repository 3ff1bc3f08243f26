#include "platforms/simulated/simulated_process.h"

#include <utility>

#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

ProcessID SimulatedProcess::pid() const { return system_.ownPid(); }

void SimulatedProcess::becomeAccessory() {
  if (auto* self = system_.state.application(pid()))
    self->identity.activationPolicy = ActivationPolicy::accessory;
}

void SimulatedProcess::activate() {
  if (!system_.portCall("activates itself")) return;
  system_.change([this](DesktopState& desktop) { desktop.activate(pid()); });
}

Subscription SimulatedProcess::onSignal(TerminationSignal signal, std::function<void()> handler) {
  return handlers_[signal].add(std::move(handler));
}

void SimulatedProcess::exit(int status) {
  if (system_.portCall("exits with {}", status)) system_.exit(status);
}

void SimulatedProcess::terminate() {
  system_.mainLoop.terminate([this] {
    if (onTerminate_) onTerminate_();
    system_.exit(0);
  });
}

void SimulatedProcess::launchNewInstance(
    std::function<void(std::expected<void, SystemError>)> onLaunched) {
  if (!system_.portCall("launches a new instance")) return;
  std::expected<void, SystemError> result;
  if (auto fault = std::exchange(launchFault_, std::nullopt))
    result = std::unexpected(std::move(*fault));
  else
    ++launchedInstances_;
  system_.mainLoop.post([onLaunched = std::move(onLaunched), result] { onLaunched(result); });
}

void SimulatedProcess::receive(TerminationSignal signal) {
  const auto handled = handlers_.find(signal);
  if (handled == handlers_.end()) return system_.kill();
  system_.mainLoop.post([&handlers = handled->second] { handlers.notify(); });
}

}  // namespace pellow::simulated
