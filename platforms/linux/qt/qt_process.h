#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/process.h"
#include "platforms/linux/system/termination_signals.h"

namespace pellow {

// This process as a Qt application.
class QtProcess final : public Process {
 public:
  // Set in the environment of the process that this one starts to replace itself.
  static constexpr const char* relaunchedVariable = "PELLOW_RELAUNCHED";

  // `beforeExit` is called before the process ends without the normal termination.
  QtProcess(std::vector<std::string> arguments, TerminationSignals& signals,
            std::function<void()> beforeExit);

  ProcessID pid() const override;
  std::span<const std::string> arguments() const override { return arguments_; }
  void becomeAccessory() override;
  Subscription onSignal(TerminationSignal signal, std::function<void()> handler) override;
  void exit(int status) override;
  void terminate() override;
  void launchNewInstance(std::function<void(std::expected<void, SystemError>)> onLaunched) override;

 private:
  std::vector<std::string> arguments_;
  TerminationSignals& signals_;
  std::function<void()> beforeExit_;
};

}  // namespace pellow
