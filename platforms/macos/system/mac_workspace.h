#pragma once

#import <AppKit/AppKit.h>

#include <map>
#include <memory>

#include "base/handler_list.h"
#include "platform/workspace.h"
#include "platforms/macos/system/running_applications.h"

namespace pellow {

class Foreground;

// The applications that NSWorkspace knows. What it tells of them changes only from one turn of the
// main loop to the next.
class MacWorkspace final : public Workspace {
 public:
  explicit MacWorkspace(std::shared_ptr<Foreground> foreground);

  std::vector<RunningApplication> runningApplications() override;
  std::optional<RunningApplication> application(ProcessID pid) override;
  std::optional<ProcessID> frontmostApplication() override;
  bool hide(ProcessID pid) override;
  bool unhide(ProcessID pid) override;
  bool activate(ProcessID pid) override;
  void activateDesktop() override;
  std::vector<WindowOnScreen> windowsOnScreen() override;
  bool keepsWindowsOnDisplays() override { return false; }
  std::string windowServerDescription() override;
  bool hasWindowsOnOtherSpaces(ProcessID pid) override;
  bool open(std::string_view url) override;
  Subscription onDidActivateApplication(std::function<void(ProcessID)> observer) override;
  Subscription onDidBecomeRegular(std::function<void(ProcessID)> observer) override;
  Subscription onDidTerminateApplication(std::function<void(ProcessID)> observer) override;
  Subscription onDidChangeActiveSpace(std::function<void()> observer) override;

 private:
  struct Icon {
    NSRunningApplication* owner;
    Image image;
  };

  RunningApplication describe(NSRunningApplication* application);
  std::optional<Image> iconOf(NSRunningApplication* application);

  const std::shared_ptr<Foreground> foreground_;

  // AppKit makes a new picture each time, and images are equal only if they share it.
  std::map<ProcessID, Icon> icons_;
  HandlerList<void(ProcessID)> becameRegular_;
  HandlerList<void(ProcessID)> terminated_;
  RunningApplications running_;
};

}  // namespace pellow
