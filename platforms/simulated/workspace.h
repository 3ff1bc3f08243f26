#pragma once

#include "platform/workspace.h"
#include "platforms/simulated/system.h"

namespace pellow::simulated {

class Workspace final : public pellow::Workspace {
 public:
  explicit Workspace(System& system) : system_(system) {}

  std::vector<RunningApplication> runningApplications() override;
  std::optional<RunningApplication> application(ProcessID pid) override;
  std::optional<ProcessID> frontmostApplication() override;
  bool hide(ProcessID pid) override;
  bool unhide(ProcessID pid) override;
  bool activate(ProcessID pid) override;
  void activateDesktop() override;
  std::vector<WindowOnScreen> windowsOnScreen() override;
  bool keepsWindowsOnDisplays() override { return system_.state.keepsWindowsOnDisplays; }
  std::string windowServerDescription() override { return "a simulated desktop"; }
  bool hasWindowsOnOtherSpaces(ProcessID pid) override;
  bool open(std::string_view url) override;
  Subscription onDidActivateApplication(std::function<void(ProcessID)> observer) override;
  Subscription onDidBecomeRegular(std::function<void(ProcessID)> observer) override;
  Subscription onDidTerminateApplication(std::function<void(ProcessID)> observer) override;
  Subscription onDidChangeActiveSpace(std::function<void()> observer) override;

  // From now on, as some window managers do; windows stay where they are.
  void keepWindowsOnDisplays(bool keeps = true) { system_.state.keepsWindowsOnDisplays = keeps; }

  // The user turns to another Space; windows open on the one that is shown.
  void showSpace(int space) { system_.showSpace(space); }

  // URLs that the program opened, and whether nothing opens them any more.
  const std::vector<std::string>& openedURLs() const { return system_.state.openedURLs; }
  void refuseURLs(bool refuses = true) { system_.state.refusesURLs = refuses; }
  // Takes activations for mere wishes and ignores them.
  void ignoreActivations(bool ignores = true) { system_.state.ignoresActivations = ignores; }

 private:
  // Unless the request has been taken back.
  void hideAsAsked(ProcessID pid);

  System& system_;
};

}  // namespace pellow::simulated
