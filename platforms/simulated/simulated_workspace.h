#pragma once

#include "platform/workspace.h"
#include "platforms/simulated/simulated_system.h"

namespace pellow::simulated {

class SimulatedWorkspace final : public Workspace {
 public:
  explicit SimulatedWorkspace(SimulatedSystem& system) : system_(system) {}

  std::vector<RunningApplication> runningApplications() override;
  std::optional<RunningApplication> application(ProcessID pid) override;
  std::optional<ProcessID> frontmostApplication() override;
  bool hide(ProcessID pid) override;
  bool unhide(ProcessID pid) override;
  bool activate(ProcessID pid) override;
  bool open(std::string_view url) override;
  Subscription onDidActivateApplication(std::function<void(ProcessID)> observer) override;
  Subscription onDidBecomeRegular(std::function<void(ProcessID)> observer) override;
  Subscription onDidTerminateApplication(std::function<void(ProcessID)> observer) override;

 private:
  // Unless the wish has been taken back.
  void hideAsAsked(ProcessID pid);

  SimulatedSystem& system_;
};

}  // namespace pellow::simulated
