#pragma once

#include <string_view>

#include "platform/process.h"

namespace pellow {

// This process as an application of the system. Made when there is an NSApplication.
class MacProcess final : public Process {
 public:
  // In the environment of the process that this one starts to take its place: the process number of
  // this one.
  static constexpr const char* predecessorVariable = "PELLOW_PREDECESSOR";

  ProcessID pid() const override;
  void becomeAccessory() override;
  Subscription onSignal(TerminationSignal signal, std::function<void()> handler) override;
  void print(std::string_view line) override;
  void exit(int status) override;
  void terminate() override;
  void launchNewInstance(std::function<void(std::expected<void, SystemError>)> onLaunched) override;
};

}  // namespace pellow
