#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/handler_list.h"
#include "platform/process.h"

namespace pellow::simulated {

class System;

// The life of the simulated process.
class Process final : public pellow::Process {
 public:
  explicit Process(System& system) : system_(system) {}

  ProcessID pid() const override;
  void becomeAccessory() override;
  Subscription onSignal(TerminationSignal signal, std::function<void()> handler) override;
  void print(std::string_view line) override;
  void exit(int status) override;
  void terminate() override;
  void launchNewInstance(std::function<void(std::expected<void, SystemError>)> onLaunched) override;

  bool isRunning() const;
  // On standard output, so far.
  const std::vector<std::string>& printed() const { return printed_; }
  // Set once the process has ended by itself.
  std::optional<int> exitStatus() const;
  bool isAccessory() const;
  // The system sends a signal: the handlers hear of it. If none was ever added, the default ends
  // the process.
  void receive(TerminationSignal signal);
  // SIGKILL: nothing of it runs any more, and its calls do nothing.
  void kill();
  // New instances that wait for this one to end.
  int launchedInstances() const { return launchedInstances_; }
  void failNextLaunch(SystemError error) { launchFault_ = std::move(error); }
  // What the program does after its main loop and before the process ends with status 0.
  void onTerminate(std::function<void()> handler) { onTerminate_ = std::move(handler); }

 private:
  System& system_;
  std::map<TerminationSignal, HandlerList<void()>> handlers_;
  std::function<void()> onTerminate_;
  std::vector<std::string> printed_;
  int launchedInstances_ = 0;
  std::optional<SystemError> launchFault_;
};

}  // namespace pellow::simulated
