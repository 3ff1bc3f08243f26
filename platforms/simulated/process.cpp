#include "platforms/simulated/process.h"

#include <utility>

#include "platforms/simulated/system.h"

namespace pellow::simulated {

ProcessID Process::pid() const { return system_.ownPid(); }

void Process::becomeAccessory() {
  if (auto* self = system_.state.application(pid()))
    self->identity.activationPolicy = ActivationPolicy::accessory;
}

Subscription Process::onSignal(TerminationSignal signal, std::function<void()> handler) {
  return handlers_[signal].add(std::move(handler));
}

void Process::print(std::string_view line) {
  if (system_.portCall("prints a line")) printed_.emplace_back(line);
}

void Process::exit(int status) {
  if (system_.portCall("exits with {}", status)) system_.exit(status);
}

void Process::terminate() {
  system_.mainLoop.terminate([this] {
    if (onTerminate_) onTerminate_();
    system_.exit(0);
  });
}

void Process::launchNewInstance(std::function<void(std::expected<void, SystemError>)> onLaunched) {
  if (!system_.portCall("launches a new instance")) return;
  std::expected<void, SystemError> result;
  if (auto fault = std::exchange(launchFault_, std::nullopt))
    result = std::unexpected(std::move(*fault));
  else
    ++launchedInstances_;
  system_.mainLoop.post([onLaunched = std::move(onLaunched), result] { onLaunched(result); });
}

bool Process::isRunning() const { return system_.processRuns(); }

std::optional<int> Process::exitStatus() const { return system_.exitStatus(); }

bool Process::isAccessory() const {
  const auto* self = system_.state.application(pid());
  return self && self->identity.activationPolicy == ActivationPolicy::accessory;
}

void Process::kill() { system_.kill(); }

void Process::receive(TerminationSignal signal) {
  const auto handled = handlers_.find(signal);
  if (handled == handlers_.end()) return system_.kill();
  system_.mainLoop.post([&handlers = handled->second] { handlers.notify(); });
}

}  // namespace pellow::simulated
