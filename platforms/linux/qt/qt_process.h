#pragma once

#include <functional>
#include <string_view>

#include "platform/process.h"
#include "platforms/linux/system/termination_signals.h"

namespace pellow {

// This process as a Qt application.
class QtProcess final : public Process {
 public:
  // Set in the environment of the process that this one starts to replace itself.
  static constexpr const char* relaunchedVariable = "PELLOW_RELAUNCHED";

  // `beforeExit` is called before the process ends without the normal termination.
  QtProcess(TerminationSignals& signals, std::function<void()> beforeExit);

  ProcessID pid() const override;
  void becomeAccessory() override;
  Subscription onSignal(TerminationSignal signal, std::function<void()> handler) override;
  void print(std::string_view line) override;
  void exit(int status) override;
  void terminate() override;
  void launchNewInstance(std::function<void(std::expected<void, SystemError>)> onLaunched) override;

 private:
  TerminationSignals& signals_;
  std::function<void()> beforeExit_;
};

}  // namespace pellow
